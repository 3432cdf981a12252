// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes to the Marvik.cfg reader; whatever it reads must be
// written in the fixed form and read back to the same settings.
#include "core/app/Config.h"
#include "core/app/TextCodec.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace marvik::app;
    Settings s;
    s.maps = {{QStringLiteral("Europe Map"), {}, {}}, {QStringLiteral("World Map"), {}, {}}};
    parseConfig(decodeTextFile(QByteArrayView(data, qsizetype(size))), s);
    if (s.currentList < 1 || s.currentList > 5 || s.sortMode < 0 || s.sortMode > 1 || s.alwaysOnTop < 0
        || s.alwaysOnTop > 1)
        std::abort();
    const QStringList lines = configLines(s);
    if (lines.size() != 21 + s.maps.size() || !lines[9].isEmpty() || !lines[10].isEmpty())
        std::abort();
    // Texts with line breaks cannot survive a line-based file, a callsign or
    // list name reading "Maps:" ends the numbered part early, and a map line
    // loses its trailing blanks when read as an item; anything else must come back.
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString &l = lines[i];
        if (l.contains(u'\r') || l.contains(u'\n') || l.contains(u',') || (i < 19 && l == QLatin1String("Maps:"))
            || (i >= 21 && (l.endsWith(u' ') || l.endsWith(u'\t'))))
            return 0;
    }
    Settings back;
    back.maps = {{QStringLiteral("Europe Map"), {}, {}}, {QStringLiteral("World Map"), {}, {}}};
    const QString text = lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
    parseConfig(decodeTextFile(encodeTextFile(text)), back);
    if (configLines(back) != lines)
        std::abort();
    return 0;
}
