// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/TextCodec.h"

#include <algorithm>
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
    // Latin-1 but for 32 bytes. Qt's Latin-1 conversion is vectorized, and
    // a list file has few of those 32 or none: each block of bytes is
    // looked at once, and mended only when it has one.
    QString text = QString::fromLatin1(bytes);
    const auto *in = reinterpret_cast<const unsigned char *>(bytes.data());
    const qsizetype n = bytes.size();
    QChar *out = nullptr;
    for (qsizetype from = 0; from < n; from += 256) {
        const qsizetype to = std::min(n, from + 256);
        unsigned high = 0;
        for (qsizetype i = from; i < to; ++i)
            high |= unsigned(in[i] - 0x80u < 0x20u);
        if (!high)
            continue;
        if (!out)
            out = text.data();
        for (qsizetype i = from; i < to; ++i) {
            if (in[i] - 0x80u < 0x20u)
                out[i] = QChar(kHighControls[in[i] - 0x80u]);
        }
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
    // A byte-order mark before text that is not UTF-8 was never written as
    // UTF-8: it is a Windows-1252 file whose text begins with "ï»¿". Read as
    // UTF-8 its letters would turn into replacement characters for good;
    // Windows-1252 takes every byte back unchanged.
    if (bytes.startsWith(QByteArrayView(kUtf8Bom)) && isValidUtf8(bytes.sliced(3)))
        return QString::fromUtf8(bytes.sliced(3));
    return fromWindows1252(bytes);
}

QByteArray encodeTextFile(QStringView text)
{
    QByteArray bytes;
    // A Windows-1252 file must never begin with the bytes of a byte-order
    // mark, which every reader takes for UTF-8: such a text is written as
    // UTF-8 with a mark of its own.
    if (toWindows1252(text, bytes) && !bytes.startsWith(kUtf8Bom))
        return bytes;
    return QByteArray(kUtf8Bom) + text.toUtf8();
}

bool isValidUtf8(QByteArrayView bytes)
{
    qsizetype i = 0;
    const qsizetype n = bytes.size();
    while (i < n) {
        const auto c = static_cast<unsigned char>(bytes[i]);
        int more = 0;
        char32_t code = 0;
        if (c < 0x80) {
            ++i;
            continue;
        } else if (c >= 0xC2 && c <= 0xDF) {
            more = 1;
            code = c & 0x1F;
        } else if (c >= 0xE0 && c <= 0xEF) {
            more = 2;
            code = c & 0x0F;
        } else if (c >= 0xF0 && c <= 0xF4) {
            more = 3;
            code = c & 0x07;
        } else {
            return false;
        }
        for (int k = 1; k <= more; ++k) {
            if (i + k >= n)
                return false;
            const auto next = static_cast<unsigned char>(bytes[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (next & 0x3F);
        }
        // Overlong forms, surrogates and code points past U+10FFFF.
        if ((more == 2 && code < 0x800) || (more == 3 && (code < 0x10000 || code > 0x10FFFF))
            || (code >= 0xD800 && code <= 0xDFFF))
            return false;
        i += more + 1;
    }
    return true;
}

} // namespace marvik::app
