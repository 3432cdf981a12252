// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/AdifExport.h"

#include "core/app/Number.h"
#include "core/app/TextFile.h"
#include "core/lists/CallListModel.h"
#include "core/logs/AdifWriter.h"

#include <QRegularExpression>

namespace marvik::logs {

using lists::CallRecord;
using lists::Column;

namespace {

bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

class RecordBuilder
{
public:
    explicit RecordBuilder(AdifFormat format)
        : m_format(format)
    {
    }

    void add(QStringView name, const QString &value, QChar type = {})
    {
        if (!value.isEmpty())
            m_record.fields.append({name.toString(), value, type});
    }

    /// A text field and, in ADX, its Unicode twin: the plain field may hold
    /// ASCII only there, while tagged files carry the text as it is.
    void addText(QStringView name, QStringView intlName, const QString &value)
    {
        if (m_format == AdifFormat::Adi || isAscii(value)) {
            add(name, value);
            return;
        }
        add(name, asciiText(value));
        add(intlName, value);
    }

    /// One of Marvik's own fields; ADX wants a type on these.
    void addOwn(QStringView name, const QString &value, QChar adxType)
    {
        m_record.fields.append({name.toString(), value, m_format == AdifFormat::Adx ? adxType : QChar()});
    }

    AdifRecord take() { return std::move(m_record); }

private:
    AdifFormat m_format;
    AdifRecord m_record;
};

} // namespace

QString programVersion()
{
    return QStringLiteral(MARVIK_VERSION);
}

bool isBandName(const QString &band)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d+(\\.\\d+)?(m|cm|mm)|submm)$"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern.match(band).hasMatch();
}

const QStringList &bandNames()
{
    // The enumeration of ADIF 3.1.4.
    static const QStringList bands = {
        QStringLiteral("2190m"), QStringLiteral("630m"), QStringLiteral("560m"),   QStringLiteral("160m"),
        QStringLiteral("80m"),   QStringLiteral("60m"),  QStringLiteral("40m"),    QStringLiteral("30m"),
        QStringLiteral("20m"),   QStringLiteral("17m"),  QStringLiteral("15m"),    QStringLiteral("12m"),
        QStringLiteral("10m"),   QStringLiteral("8m"),   QStringLiteral("6m"),     QStringLiteral("5m"),
        QStringLiteral("4m"),    QStringLiteral("2m"),   QStringLiteral("1.25m"),  QStringLiteral("70cm"),
        QStringLiteral("33cm"),  QStringLiteral("23cm"), QStringLiteral("13cm"),   QStringLiteral("9cm"),
        QStringLiteral("6cm"),   QStringLiteral("3cm"),  QStringLiteral("1.25cm"), QStringLiteral("6mm"),
        QStringLiteral("4mm"),   QStringLiteral("2.5mm"), QStringLiteral("2mm"),   QStringLiteral("1mm"),
        QStringLiteral("submm"),
    };
    return bands;
}

bool isModeName(const QString &mode)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9][A-Za-z0-9/-]*$"));
    return pattern.match(mode).hasMatch();
}

QString asciiText(const QString &text)
{
    static const QHash<char16_t, QString> spelt = {
        {u'ß', QStringLiteral("ss")}, {u'æ', QStringLiteral("ae")}, {u'Æ', QStringLiteral("AE")},
        {u'ø', QStringLiteral("o")},  {u'Ø', QStringLiteral("O")},  {u'đ', QStringLiteral("d")},
        {u'Đ', QStringLiteral("D")},  {u'ł', QStringLiteral("l")},  {u'Ł', QStringLiteral("L")},
        {u'œ', QStringLiteral("oe")}, {u'Œ', QStringLiteral("OE")}, {u'þ', QStringLiteral("th")},
        {u'Þ', QStringLiteral("Th")}, {u'ð', QStringLiteral("d")},  {u'Ð', QStringLiteral("D")},
        {u'ı', QStringLiteral("i")},
    };
    QString out;
    const QString decomposed = text.normalized(QString::NormalizationForm_D);
    for (const QChar c : decomposed) {
        if (c.unicode() < 0x80)
            out += c;
        else if (const auto it = spelt.constFind(c.unicode()); it != spelt.constEnd())
            out += *it;
    }
    return out.simplified();
}

AdifLog listToLog(const lists::CallListModel &model, const ExportOptions &options)
{
    AdifLog log;
    log.format = options.format;
    const QString version = programVersion();
    log.preamble = QStringLiteral("Marvik %1 list export").arg(version);
    const QDateTime created = (options.created.isValid() ? options.created : QDateTime::currentDateTime()).toUTC();
    log.header = {
        {QStringLiteral("ADIF_VER"), kAdifVersion.toString(), {}},
        {QStringLiteral("PROGRAMID"), QStringLiteral("Marvik"), {}},
        {QStringLiteral("PROGRAMVERSION"), version, {}},
        {QStringLiteral("CREATED_TIMESTAMP"), created.toString(QStringLiteral("yyyyMMdd HHmmss")), {}},
    };
    log.headerEnded = true;
    const QString band = options.band.toLower();
    const QString mode = options.mode.toUpper();

    for (int i = 0; i < model.rowCount(); ++i) {
        const CallRecord row = model.record(i);
        const QString &call = row[Column::Callsign];
        if (call.isEmpty())
            continue;
        RecordBuilder r(options.format);
        r.add(u"CALL", call);
        r.addText(u"NAME", u"NAME_INTL", row[Column::FullName]);
        r.addText(u"ADDRESS", u"ADDRESS_INTL", row[Column::Address]);
        r.addText(u"QTH", u"QTH_INTL", row[Column::City]);
        r.addText(u"COUNTRY", u"COUNTRY_INTL", row[Column::Country]);

        const double lat = app::val(row[Column::Latitude]);
        const double lon = app::val(row[Column::Longitude]);
        const QString locator = maps::toLocator(lat, lon);
        // Either coordinate 0 means the row has no position, as everywhere in a list.
        const bool position = lat != 0 && lon != 0 && !locator.isEmpty();
        if (position) {
            r.add(u"LAT", locationText(lat, true));
            r.add(u"LON", locationText(lon, false));
            r.add(u"GRIDSQUARE", locator);
        }
        const QDateTime when =
            QDateTime::fromString(row[Column::TimeStamp], QStringLiteral("yyyyMMddHHmmss")).toUTC();
        if (when.isValid()) {
            r.add(u"QSO_DATE", when.toString(QStringLiteral("yyyyMMdd")));
            r.add(u"TIME_ON", when.toString(QStringLiteral("HHmmss")));
        }
        r.add(u"BAND", band);
        r.add(u"MODE", mode);

        if (row[Column::FirstName] != lists::firstWord(row[Column::FullName]))
            r.addOwn(kAppFirstName, row[Column::FirstName], u'I');
        if (position) {
            r.addOwn(kAppLatitude, row[Column::Latitude].trimmed(), u'N');
            r.addOwn(kAppLongitude, row[Column::Longitude].trimmed(), u'N');
        }
        if (!row[Column::Extra].isEmpty())
            r.addOwn(kAppExtra, row[Column::Extra], u'I');
        log.records.append(r.take());
    }
    return log;
}

int exportAdifFile(const lists::CallListModel &model, const QString &path, const ExportOptions &options,
                   QString *errorString)
{
    const AdifLog log = listToLog(model, options);
    const QByteArray bytes = options.format == AdifFormat::Adx ? writeAdx(log) : writeAdi(log);
    if (!app::writeFileAtomically(path, bytes, errorString))
        return -1;
    return int(log.records.size());
}

} // namespace marvik::logs
