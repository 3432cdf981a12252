// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/TextCodec.h"

#include <array>

namespace marvik::app {

namespace {

// 0x80..0x9F; the rest of the code page is Latin-1.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";

int windows1252Byte(char16_t u)
{
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return u;
    for (std::size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == u)
            return int(0x80 + i);
    }
    return -1;
}

} // namespace

QString fromWindows1252(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (const char b : bytes) {
        const auto byte = static_cast<unsigned char>(b);
        *out++ = QChar(byte >= 0x80 && byte < 0xA0 ? kHighControls[byte - 0x80] : char16_t(byte));
    }
    return text;
}

bool toWindows1252(QStringView text, QByteArray &out)
{
    out.resize(text.size());
    char *p = out.data();
    for (const QChar c : text) {
        const int byte = windows1252Byte(c.unicode());
        if (byte < 0)
            return false;
        *p++ = static_cast<char>(byte);
    }
    return true;
}

QString decodeTextFile(QByteArrayView bytes)
{
    if (bytes.startsWith(QByteArrayView(kUtf8Bom)))
        return QString::fromUtf8(bytes.sliced(3));
    return fromWindows1252(bytes);
}

QByteArray encodeTextFile(QStringView text)
{
    QByteArray bytes;
    if (toWindows1252(text, bytes))
        return bytes;
    return QByteArray(kUtf8Bom) + text.toUtf8();
}

} // namespace marvik::app
