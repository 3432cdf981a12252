// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/AdifReader.h"

#include "core/app/TextCodec.h"

#include <QFile>
#include <QStringDecoder>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>

namespace marvik::logs {

namespace {

// A tag longer than this is taken for text; it holds any name of up to
// kMaxNameLength characters in UTF-8 with its length and type.
constexpr qsizetype kMaxTagLength = 4 * kMaxNameLength + 64;
// Bigger than any log a station keeps; a file beyond it is refused whole.
constexpr qint64 kMaxFileSize = qint64(1) << 30;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

QByteArrayView trimmed(QByteArrayView v)
{
    while (!v.isEmpty() && isBlank(v.front()))
        v = v.sliced(1);
    while (!v.isEmpty() && isBlank(v.back()))
        v.chop(1);
    return v;
}

bool isAscii(QByteArrayView v)
{
    return std::all_of(v.begin(), v.end(), [](char c) { return uchar(c) < 0x80; });
}

/// Text that is UTF-8 when it is valid UTF-8, Windows-1252 otherwise (the
/// code page older Windows loggers write in).
QString decodeText(QByteArrayView bytes)
{
    if (isAscii(bytes))
        return QString::fromLatin1(bytes);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    return utf8.hasError() ? app::fromWindows1252(bytes) : text;
}

/// The UTF-8 sequence at `at`: its length in bytes, and in `units` the
/// number of UTF-16 units it makes. 0 for anything that is not well-formed
/// UTF-8 (overlong forms and surrogates included).
int utf8Sequence(QByteArrayView b, qsizetype at, int &units)
{
    const uchar c = uchar(b[at]);
    units = 1;
    int length = 0;
    uchar low = 0x80;
    uchar high = 0xBF;
    if (c < 0x80)
        return 1;
    if (c < 0xC2)
        return 0;
    if (c < 0xE0) {
        length = 2;
    } else if (c < 0xF0) {
        length = 3;
        low = c == 0xE0 ? 0xA0 : 0x80;
        high = c == 0xED ? 0x9F : 0xBF;
    } else if (c < 0xF5) {
        length = 4;
        units = 2;
        low = c == 0xF0 ? 0x90 : 0x80;
        high = c == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (at + length > b.size())
        return 0;
    const uchar second = uchar(b[at + 1]);
    if (second < low || second > high)
        return 0;
    for (int i = 2; i < length; ++i) {
        if ((uchar(b[at + i]) & 0xC0) != 0x80)
            return 0;
    }
    return length;
}

/// A data type indicator is one letter; anything else is ignored.
QChar typeIndicator(QByteArrayView text)
{
    if (text.size() != 1)
        return {};
    const QChar c = QChar(QLatin1Char(text[0])).toUpper();
    return c >= u'A' && c <= u'Z' ? c : QChar();
}

struct TransparentHash
{
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
    std::size_t operator()(std::u16string_view s) const { return std::hash<std::u16string_view>{}(s); }
};

/// Element names in upper case, each worked out once: a log repeats the
/// same few dozen in every record.
class UpperNames
{
public:
    QString operator()(QStringView name)
    {
        const std::u16string_view key(name.utf16(), std::size_t(name.size()));
        const auto it = m_names.find(key);
        if (it != m_names.end())
            return it->second;
        return m_names.emplace(std::u16string(key), name.toString().toUpper()).first->second;
    }

private:
    std::unordered_map<std::u16string, QString, TransparentHash, std::equal_to<>> m_names;
};

class AdiParser
{
public:
    explicit AdiParser(QByteArrayView bytes)
        : m_b(bytes)
    {
    }

    AdifLog run();

private:
    enum class Unit { Unknown, Bytes, Characters };

    int lineAt(qsizetype offset);
    QString fieldName(QByteArrayView raw);
    qsizetype valueEnd(qsizetype start, qsizetype length, const QString &name, bool &utf8);
    bool followedByTag(qsizetype at) const;
    bool insideSequence(qsizetype at) const { return at < m_b.size() && (uchar(m_b[at]) & 0xC0) == 0x80; }

    QByteArrayView m_b;
    AdifLog m_log;
    Unit m_unit = Unit::Unknown;
    qsizetype m_lineOffset = 0;
    int m_line = 1;
    std::unordered_map<std::string, QString, TransparentHash, std::equal_to<>> m_names;
};

int AdiParser::lineAt(qsizetype offset)
{
    if (offset < m_lineOffset) {
        m_lineOffset = 0;
        m_line = 1;
    }
    m_line += int(std::count(m_b.data() + m_lineOffset, m_b.data() + offset, '\n'));
    m_lineOffset = offset;
    return m_line;
}

QString AdiParser::fieldName(QByteArrayView raw)
{
    // A log repeats the same few dozen names in every record: share one
    // string per name instead of building one per field.
    const std::string_view key(raw.data(), std::size_t(raw.size()));
    const auto it = m_names.find(key);
    if (it != m_names.end())
        return it->second;
    const QString name = decodeText(raw).toUpper();
    m_names.emplace(std::string(key), name);
    return name;
}

bool AdiParser::followedByTag(qsizetype at) const
{
    while (at < m_b.size() && isBlank(m_b[at]))
        ++at;
    return at >= m_b.size() || m_b[at] == '<';
}

qsizetype AdiParser::valueEnd(qsizetype start, qsizetype length, const QString &name, bool &utf8)
{
    const qsizetype n = m_b.size();
    const qsizetype byteEnd = start + length;
    utf8 = true;
    if (isAscii(m_b.sliced(start, std::min(byteEnd, n) - start)))
        return byteEnd;

    // Walk `length` characters (UTF-16 units) of UTF-8.
    qsizetype at = start;
    qsizetype units = 0;
    while (units < length && at < n) {
        int u = 0;
        const int size = utf8Sequence(m_b, at, u);
        if (size == 0) {
            // Not UTF-8: a code page, one byte per character.
            utf8 = false;
            return byteEnd;
        }
        at += size;
        units += u;
    }
    const qsizetype charEnd = units >= length ? at : n + 1;
    const bool bytesFit = byteEnd <= n && !insideSequence(byteEnd) && followedByTag(byteEnd);
    const bool charsFit = charEnd <= n && followedByTag(charEnd);
    if (bytesFit != charsFit) {
        if (m_unit == Unit::Unknown)
            m_unit = bytesFit ? Unit::Bytes : Unit::Characters;
        return bytesFit ? byteEnd : charEnd;
    }
    if (!bytesFit)
        m_log.addProblem(AdifProblemKind::UnclearLength, lineAt(start), name);
    // Both fit (the values differ in trailing blanks) or neither: go by what
    // the file did before, else by characters, as most loggers count.
    return m_unit == Unit::Bytes ? byteEnd : charEnd;
}

AdifLog AdiParser::run()
{
    m_log.format = AdifFormat::Adi;
    const char *d = m_b.data();
    const qsizetype n = m_b.size();
    qsizetype pos = m_b.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    const qsizetype textStart = pos;
    bool anyTag = false;
    QList<AdifField> fields;
    int recordLine = 0;

    const auto firstTag = [&](qsizetype at) {
        if (!anyTag) {
            anyTag = true;
            m_log.preamble = decodeText(m_b.sliced(textStart, at - textStart)).trimmed();
        }
    };

    while (pos < n) {
        const void *found = std::memchr(d + pos, '<', std::size_t(n - pos));
        if (!found)
            break;
        const qsizetype at = static_cast<const char *>(found) - d;
        qsizetype gt = -1;
        const qsizetype limit = std::min(n, at + 1 + kMaxTagLength);
        for (qsizetype i = at + 1; i < limit; ++i) {
            if (d[i] == '>') {
                gt = i;
                break;
            }
            if (d[i] == '<')
                break;
        }
        if (gt < 0) {
            pos = at + 1;
            continue;
        }
        const QByteArrayView inside = m_b.sliced(at + 1, gt - at - 1);
        const qsizetype colon = inside.indexOf(':');
        if (colon < 0) {
            const QByteArrayView word = trimmed(inside);
            const bool eor = word.compare("EOR", Qt::CaseInsensitive) == 0;
            const bool eoh = word.compare("EOH", Qt::CaseInsensitive) == 0;
            if (eor || eoh)
                firstTag(at);
            if (eor && !fields.isEmpty()) {
                const qsizetype size = fields.size();
                m_log.records.append({std::move(fields), recordLine});
                // The next record most likely has as many fields.
                fields = {};
                fields.reserve(size);
            } else if (eoh) {
                if (!m_log.headerEnded && m_log.records.isEmpty()) {
                    m_log.header = std::move(fields);
                    fields = {};
                    m_log.headerEnded = true;
                } else {
                    m_log.addProblem(AdifProblemKind::LateHeaderEnd, lineAt(at));
                }
            }
            // Any other bare tag is text ("<br>" in a header, a program's name).
            pos = gt + 1;
            continue;
        }

        const QByteArrayView rawName = trimmed(inside.first(colon));
        QByteArrayView afterName = inside.sliced(colon + 1);
        const qsizetype secondColon = afterName.indexOf(':');
        const QByteArrayView lengthText = trimmed(secondColon < 0 ? afterName : afterName.first(secondColon));
        const QByteArrayView typeText = secondColon < 0 ? QByteArrayView() : trimmed(afterName.sliced(secondColon + 1));
        const bool digits = !lengthText.isEmpty()
            && std::all_of(lengthText.begin(), lengthText.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (!digits) {
            // Before the first field this is free text ("<note: ...>").
            if (anyTag)
                m_log.addProblem(AdifProblemKind::BadLength, lineAt(at), decodeText(rawName).toUpper());
            pos = anyTag ? gt + 1 : at + 1;
            continue;
        }
        firstTag(at);
        qsizetype length = 0;
        for (const char c : lengthText) {
            // Anything past the end of the file is as good as infinite.
            length = std::min<qsizetype>(length * 10 + (c - '0'), n + 1);
        }
        const QString name = fieldName(rawName);
        if (fields.isEmpty())
            recordLine = lineAt(at);

        const qsizetype start = gt + 1;
        bool utf8 = true;
        qsizetype end = valueEnd(start, length, name, utf8);
        if (end > n) {
            m_log.addProblem(AdifProblemKind::CutShort, lineAt(start), name);
            end = n;
        }
        const QByteArrayView raw = m_b.sliced(start, end - start);
        if (name.isEmpty() || name.size() > kMaxNameLength) {
            m_log.addProblem(AdifProblemKind::BadName, lineAt(at));
        } else {
            AdifField field{name, {}, typeIndicator(typeText)};
            if (isAscii(raw))
                field.value = QString::fromLatin1(raw);
            else
                field.value = utf8 ? QString::fromUtf8(raw) : app::fromWindows1252(raw);
            fields.append(std::move(field));
        }
        pos = end;
    }
    if (!fields.isEmpty()) {
        m_log.addProblem(AdifProblemKind::MissingEndOfRecord, recordLine);
        m_log.records.append({std::move(fields), recordLine});
    }
    return std::move(m_log);
}

QString attribute(const QXmlStreamReader &xml, QLatin1StringView name)
{
    const QXmlStreamAttributes attributes = xml.attributes();
    for (const QXmlStreamAttribute &a : attributes) {
        if (a.name().compare(name, Qt::CaseInsensitive) == 0)
            return a.value().toString().trimmed();
    }
    return {};
}

} // namespace

AdifFormat detectFormat(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    // A UTF-16 byte-order mark: only XML comes that way.
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF"))
        return AdifFormat::Adx;
    while (!bytes.isEmpty() && isBlank(bytes.front()))
        bytes = bytes.sliced(1);
    const auto startsWith = [&](const char *word) {
        const qsizetype size = qsizetype(std::strlen(word));
        return bytes.size() >= size && bytes.first(size).compare(word, Qt::CaseInsensitive) == 0;
    };
    return startsWith("<?xml") || startsWith("<adx") ? AdifFormat::Adx : AdifFormat::Adi;
}

AdifLog readAdif(QByteArrayView bytes)
{
    return detectFormat(bytes) == AdifFormat::Adx ? readAdx(bytes) : readAdi(bytes);
}

AdifLog readAdi(QByteArrayView bytes)
{
    return AdiParser(bytes).run();
}

AdifLog readAdx(QByteArrayView bytes)
{
    AdifLog log;
    log.format = AdifFormat::Adx;
    // XML allows nothing before its declaration, but a log with a blank line
    // first is still a log; the lines skipped count for the line numbers.
    int skippedLines = 0;
    while (!bytes.isEmpty() && isBlank(bytes.front())) {
        skippedLines += bytes.front() == '\n';
        bytes = bytes.sliced(1);
    }
    QXmlStreamReader xml(QByteArray::fromRawData(bytes.data(), bytes.size()));
    const auto line = [&] { return int(xml.lineNumber()) + skippedLines; };
    enum class Where { Outside, Root, Header, Records, Record, Done } where = Where::Outside;
    QList<AdifField> fields;
    int recordLine = 0;
    UpperNames upper;

    while (!xml.atEnd() && where != Where::Done) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const QString element = upper(xml.name());
            switch (where) {
            case Where::Outside:
                if (element != u"ADX")
                    log.addProblem(AdifProblemKind::NotAdx, line(), xml.name().toString());
                where = Where::Root;
                break;
            case Where::Root:
                if (element == u"HEADER")
                    where = Where::Header;
                else if (element == u"RECORDS")
                    where = Where::Records;
                else
                    xml.skipCurrentElement();
                break;
            case Where::Records:
                if (element == u"RECORD") {
                    where = Where::Record;
                    fields = {};
                    recordLine = line();
                } else {
                    xml.skipCurrentElement();
                }
                break;
            case Where::Header:
            case Where::Record: {
                AdifField field;
                if (element == u"APP") {
                    field.name = (QStringLiteral("APP_") + attribute(xml, QLatin1StringView("PROGRAMID")) + u'_'
                                  + attribute(xml, QLatin1StringView("FIELDNAME")))
                                     .toUpper();
                } else if (element == u"USERDEF" && where == Where::Header) {
                    field.name = (QStringLiteral("USERDEF") + attribute(xml, QLatin1StringView("FIELDID"))).toUpper();
                } else if (element == u"USERDEF") {
                    field.name = attribute(xml, QLatin1StringView("FIELDNAME")).toUpper();
                } else {
                    field.name = element;
                }
                const QString type = attribute(xml, QLatin1StringView("TYPE"));
                field.type = typeIndicator(type.toLatin1());
                field.value = xml.readElementText(QXmlStreamReader::SkipChildElements);
                if (xml.hasError())
                    break; // a value cut short by bad XML is no value
                if (field.name.isEmpty() || field.name.size() > kMaxNameLength)
                    log.addProblem(AdifProblemKind::BadName, line());
                else
                    (where == Where::Header ? log.header : fields).append(std::move(field));
                break;
            }
            case Where::Done:
                break;
            }
        } else if (token == QXmlStreamReader::EndElement) {
            switch (where) {
            case Where::Record: {
                const qsizetype size = fields.size();
                if (size > 0)
                    log.records.append({std::move(fields), recordLine});
                fields = {};
                fields.reserve(size);
                where = Where::Records;
                break;
            }
            case Where::Header:
                log.headerEnded = true;
                where = Where::Root;
                break;
            case Where::Records: where = Where::Root; break;
            case Where::Root: where = Where::Done; break;
            case Where::Outside:
            case Where::Done: break;
            }
        }
    }
    if (xml.hasError()) {
        log.addProblem(AdifProblemKind::XmlError, line(), xml.errorString());
        // A file cut short in a record keeps what the record had.
        if (where == Where::Record && !fields.isEmpty())
            log.records.append({std::move(fields), recordLine});
    }
    return log;
}

bool readAdifFile(const QString &path, AdifLog &log, QString *errorString)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (errorString)
            *errorString = file.errorString();
        return false;
    }
    if (file.size() > kMaxFileSize) {
        if (errorString)
            *errorString = QStringLiteral("the file is larger than %1 MiB").arg(kMaxFileSize >> 20);
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        if (errorString)
            *errorString = file.errorString();
        return false;
    }
    log = readAdif(bytes);
    return true;
}

} // namespace marvik::logs
