// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes to the page decoder and the innerText rendering:
// the text must come back with every line break as CR LF, and on a page
// where the markup guard left no tag out, it must be the text the markup
// gives when parsed exactly as it came.
#include "core/lookup/HtmlText.h"

#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace marvik::lookup;
    QByteArrayView bytes(data, qsizetype(size));
    // The first byte picks a Content-Type header, so the header's charset
    // is fuzzed as well as the page's own declarations.
    QByteArrayView contentType;
    if (!bytes.isEmpty()) {
        static const char *const types[] = {"", "text/html; charset=utf-8", "text/html; charset=iso-8859-1",
                                            "text/html; charset=koi8-r", "text/html; charset=utf-16"};
        contentType = types[std::uint8_t(bytes[0]) % 5];
        bytes = bytes.sliced(1);
    }
    const QString page = decodePage(bytes, contentType);
    const DecodedPage decoded = htmlDecode(page, DecodeLimits());
    const QString &text = decoded.text;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r'))
            std::abort();
        if (text[i] == u'\r' && (i + 1 == text.size() || text[i + 1] != u'\n'))
            std::abort();
    }
    // Small pages only: unguarded, some markup costs time with the square
    // of its size.
    if (bytes.size() <= 4096 && !decoded.tagsLeftOut) {
        DecodeLimits unguarded;
        unguarded.guardMarkup = false;
        if (htmlDecode(page, unguarded).text != text)
            std::abort();
    }
    return 0;
}
