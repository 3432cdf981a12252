// SPDX-License-Identifier: GPL-3.0-or-later
// Runs every reader of the five callbooks over arbitrary page text. A reader
// may refuse a page (ReaderError) but must not crash, and whatever it
// returns is cut from the page itself.
#include "core/lookup/PageReader.h"
#include "core/lookup/SourceSettings.h"

#include <cmath>
#include <cstdlib>

namespace {

void mustComeFromPage(const QString &value, const QString &page)
{
    if (!value.isEmpty() && !page.contains(value))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace marvik::lookup;
    if (size < 3)
        return 0;
    // Byte 1: the source (1..5); byte 2: the parse cursor a previous page
    // left behind; the rest: the page text, with "|" as a line break so
    // short inputs reach the line-based rules.
    const int source = 1 + data[0] % 5;
    QString page = QString::fromUtf8(reinterpret_cast<const char *>(data + 2), qsizetype(size - 2));
    page.replace(u'|', QStringLiteral("\r\n"));
    PageReader reader;
    reader.setDataBase(source);
    reader.setCursor(data[1] % 64);
    reader.setText(page);
    const QString call = page.section(u' ', 0, 0).left(8);

    ReaderEvent event = ReaderEvent::None;
    try {
        const QString name = reader.name(call, event);
        mustComeFromPage(name, page);
        mustComeFromPage(reader.address1(), page);
        mustComeFromPage(reader.address2(), page);
        const QString country = reader.country();
        if (source != dataBaseOf(Source::Callook))
            mustComeFromPage(country, page);
    } catch (const ReaderError &) {
    }
    // The marker readers stand on their own; each may refuse the page.
    const auto guarded = [&](auto read) {
        try {
            read();
        } catch (const ReaderError &) {
        }
    };
    guarded([&] {
        if (!std::isfinite(reader.latitude()))
            std::abort();
    });
    guarded([&] {
        if (!std::isfinite(reader.longitude()))
            std::abort();
    });
    guarded([&] { mustComeFromPage(reader.licenceClass(), page); });
    guarded([&] { mustComeFromPage(reader.dateOfBirth(), page); });
    guarded([&] { mustComeFromPage(reader.gridSquare(), page); });
    guarded([&] { mustComeFromPage(reader.webPage(), page); });
    if (!reader.previousCall().isEmpty())
        std::abort();
    return 0;
}
