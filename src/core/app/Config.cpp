// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Config.h"

#include "core/app/Number.h"
#include "core/app/TextFile.h"

#include <QFileInfo>

#include <algorithm>

namespace marvik::app {

namespace {

/// Reads a text the way the Windows program read Marvik.cfg: whole lines, or
/// "items" that end at a comma or at the end of a line.
class ConfigCursor
{
public:
    explicit ConfigCursor(QStringView text)
        : m_text(text)
    {
    }

    bool atEnd() const { return m_pos >= m_text.size(); }

    QString line()
    {
        const qsizetype start = m_pos;
        while (m_pos < m_text.size() && m_text[m_pos] != u'\r' && m_text[m_pos] != u'\n')
            ++m_pos;
        const QString result = m_text.sliced(start, m_pos - start).toString();
        skipLineEnd();
        return result;
    }

    QString item()
    {
        while (m_pos < m_text.size() && (m_text[m_pos] == u' ' || m_text[m_pos] == u'\t'))
            ++m_pos;
        QString result;
        if (m_pos < m_text.size() && m_text[m_pos] == u'"') {
            const qsizetype start = ++m_pos;
            while (m_pos < m_text.size() && m_text[m_pos] != u'"' && !isLineEnd(m_text[m_pos]))
                ++m_pos;
            result = m_text.sliced(start, m_pos - start).toString();
            if (m_pos < m_text.size() && m_text[m_pos] == u'"')
                ++m_pos;
            while (m_pos < m_text.size() && m_text[m_pos] != u',' && !isLineEnd(m_text[m_pos]))
                ++m_pos;
        } else {
            const qsizetype start = m_pos;
            while (m_pos < m_text.size() && m_text[m_pos] != u',' && !isLineEnd(m_text[m_pos]))
                ++m_pos;
            result = m_text.sliced(start, m_pos - start).toString();
            while (result.endsWith(u' ') || result.endsWith(u'\t'))
                result.chop(1);
        }
        if (m_pos < m_text.size() && m_text[m_pos] == u',')
            ++m_pos;
        else
            skipLineEnd();
        return result;
    }

private:
    static bool isLineEnd(QChar c) { return c == u'\r' || c == u'\n'; }

    void skipLineEnd()
    {
        if (m_pos < m_text.size() && m_text[m_pos] == u'\r')
            ++m_pos;
        if (m_pos < m_text.size() && m_text[m_pos] == u'\n')
            ++m_pos;
    }

    QStringView m_text;
    qsizetype m_pos = 0;
};

/// A 16-bit setting read from a line; a value that does not fit leaves the
/// setting as it was.
void readInt16(const QString &line, qint16 &target)
{
    if (const auto value = toInt16(val(line)))
        target = *value;
}

void applyLine(int i, const QString &line, Settings &s)
{
    switch (i) {
    case 1:
        s.me.latitude = val(line);
        break;
    case 2:
        s.me.longitude = val(line);
        break;
    case 4:
        readInt16(line, s.sortMode);
        // Above 1 (the sort's 9 among them) reads as date/time order; a
        // negative mode names no sort option and falls back to callsign order.
        s.sortMode = std::clamp<qint16>(s.sortMode, 0, 1);
        break;
    case 5:
        readInt16(line, s.sortMode2);
        s.sortMode2 = std::min<qint16>(s.sortMode2, 1);
        break;
    case 7:
        readInt16(line, s.alwaysOnTop);
        s.alwaysOnTop = std::clamp<qint16>(s.alwaysOnTop, 0, 1);
        break;
    case 8:
        s.ownCallsign = line;
        break;
    case 11:
        readInt16(line, s.defaultDatabase);
        // -1 meant "none" to the Windows program; anything past the eight
        // sources (HamQTH, 7, came after the two CD callbooks) is as good as none.
        if (s.defaultDatabase < 0 || s.defaultDatabase > 7)
            s.defaultDatabase = 0;
        break;
    case 12:
        readInt16(line, s.language);
        if (s.language < 0 || s.language > 4)
            s.language = 0;
        break;
    case 13:
    case 14:
    case 15:
    case 16:
    case 17:
        s.listNames[std::size_t(i - 13)] = line;
        break;
    case 18:
        readInt16(line, s.currentList);
        break;
    default:
        break;
    }
}

} // namespace

void parseConfig(QStringView text, Settings &settings)
{
    ConfigCursor in(text);
    in.item(); // "LatLon:"
    int i = 0;
    bool sawMaps = false;
    while (!in.atEnd()) {
        ++i;
        const QString line = in.line();
        if (line == QLatin1String("Maps:")) {
            sawMaps = true;
            break;
        }
        applyLine(i, line, settings);
    }
    if (settings.currentList < 1 || settings.currentList > 5)
        settings.currentList = 1;
    if (!sawMaps || in.atEnd())
        return;
    readInt16(in.item(), settings.currentMap);
    while (!in.atEnd()) {
        const QString item = in.item();
        if (item == QLatin1String("NickNames:"))
            break;
        const QStringList parts = item.split(u'*');
        if (parts.size() < 3)
            continue;
        for (MapRow &row : settings.maps) {
            if (row.name.compare(parts[0], Qt::CaseInsensitive) == 0) {
                row.value1 = parts[1];
                row.value2 = parts[2];
                break;
            }
        }
    }
}

ConfigReadStatus readConfig(const QString &path, Settings &settings)
{
    if (!QFileInfo::exists(path))
        return ConfigReadStatus::Missing;
    const TextFileContent content = readTextFile(path);
    if (!content.ok)
        return ConfigReadStatus::Unreadable;
    parseConfig(content.text, settings);
    return ConfigReadStatus::Read;
}

QStringList configLines(const Settings &s)
{
    QStringList lines;
    lines.reserve(21 + s.maps.size());
    lines << QStringLiteral("LatLon:") << signedDecimal(s.me.latitude) << signedDecimal(s.me.longitude)
          << QStringLiteral("Sort:") << printedNumber(s.sortMode) << printedNumber(s.sortMode2)
          << QStringLiteral("Startup:") << QString::number(s.alwaysOnTop) << s.ownCallsign << QString()
          << QString() << printedNumber(s.defaultDatabase) << printedNumber(s.language);
    for (const QString &name : s.listNames)
        lines << name;
    lines << QString::number(s.currentList) << QStringLiteral("Maps:") << printedNumber(s.currentMap);
    for (const MapRow &row : s.maps)
        lines << row.name + u'*' + row.value1 + u'*' + row.value2;
    return lines;
}

bool writeConfig(const QString &path, const Settings &settings, QString *errorString)
{
    return writeTextLines(path, configLines(settings), errorString);
}

} // namespace marvik::app
