// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/AdifWriter.h"

#include <QXmlStreamWriter>

namespace marvik::logs {

namespace {

/// A name a tag can carry and a reader gives back as it was: none of
/// ":<>", no blank at either end (ADX names may have them), not too long.
bool isAdiName(const QString &name)
{
    const auto blank = [](QChar c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; };
    return !name.isEmpty() && name.size() <= kMaxNameLength && !blank(name.front()) && !blank(name.back())
        && std::none_of(name.begin(), name.end(), [](QChar c) { return c == u':' || c == u'<' || c == u'>'; });
}

void appendField(QString &out, const AdifField &f, QStringView after)
{
    if (!isAdiName(f.name))
        return;
    out += u'<';
    out += f.name;
    out += u':';
    out += QString::number(f.value.size());
    if (!f.type.isNull()) {
        out += u':';
        out += f.type;
    }
    out += u'>';
    out += f.value;
    out += after;
}

bool isXmlName(const QString &name)
{
    if (name.isEmpty())
        return false;
    const auto letter = [](QChar c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || c == u'_'; };
    if (!letter(name[0]) || name.startsWith(QLatin1StringView("XML"), Qt::CaseInsensitive))
        return false;
    return std::all_of(name.begin(), name.end(), [&](QChar c) { return letter(c) || (c >= u'0' && c <= u'9'); });
}

/// The text with every character XML 1.0 cannot hold left out: controls
/// other than tab and line ends, lone surrogates, U+FFFE and U+FFFF.
QString xmlText(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const char16_t u = c.unicode();
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            out += c;
            out += text[++i];
        } else if ((u >= 0x20 && !c.isSurrogate() && u != 0xFFFE && u != 0xFFFF) || u == 0x09 || u == 0x0A
                   || u == 0x0D) {
            out += c;
        }
    }
    return out;
}

void writeAdxField(QXmlStreamWriter &xml, const AdifField &f)
{
    if (f.name.startsWith(QLatin1StringView("APP_"))) {
        const qsizetype split = f.name.indexOf(u'_', 4);
        if (split > 4 && split + 1 < f.name.size()) {
            xml.writeStartElement(QStringLiteral("APP"));
            xml.writeAttribute(QStringLiteral("PROGRAMID"), xmlText(f.name.mid(4, split - 4)));
            xml.writeAttribute(QStringLiteral("FIELDNAME"), xmlText(f.name.mid(split + 1)));
            // ADX wants a type on every APP field.
            xml.writeAttribute(QStringLiteral("TYPE"), f.type.isNull() ? QStringLiteral("S") : QString(f.type));
            xml.writeCharacters(xmlText(f.value));
            xml.writeEndElement();
            return;
        }
    }
    // A bare APP or USERDEF element would be read back as one of those.
    if (!isXmlName(f.name) || f.name.size() > kMaxNameLength || f.name == u"APP" || f.name == u"USERDEF")
        return;
    xml.writeTextElement(f.name, xmlText(f.value));
}

} // namespace

QByteArray writeAdi(const AdifLog &log)
{
    QString out;
    // A header must not start with "<", or readers take the file for one
    // without a header.
    QString preamble = log.preamble.trimmed();
    if (preamble.isEmpty() || preamble.startsWith(u'<'))
        preamble.prepend(QStringLiteral("ADIF log "));
    out += preamble;
    out += u"\r\n";
    for (const AdifField &f : log.header)
        appendField(out, f, u"\r\n");
    out += u"<EOH>\r\n";
    for (const AdifRecord &r : log.records) {
        for (const AdifField &f : r.fields)
            appendField(out, f, u" ");
        out += u"<EOR>\r\n";
    }
    return out.toUtf8();
}

QByteArray writeAdx(const AdifLog &log)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("ADX"));
    xml.writeStartElement(QStringLiteral("HEADER"));
    for (const AdifField &f : log.header)
        writeAdxField(xml, f);
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("RECORDS"));
    for (const AdifRecord &r : log.records) {
        xml.writeStartElement(QStringLiteral("RECORD"));
        for (const AdifField &f : r.fields)
            writeAdxField(xml, f);
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

} // namespace marvik::logs
