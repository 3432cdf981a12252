// SPDX-License-Identifier: GPL-3.0-or-later
// How long the innerText of a large callbook-like page takes against
// gumbo's parse of the same page alone, and how long the thumbnail of a
// 12-megapixel photo takes against decoding the photo alone.
#include "BenchUtil.h"

#include "core/app/DataFolder.h"
#include "core/lookup/HtmlText.h"
#include "core/lookup/PictureFiles.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gumbo.h>

#include <cstdio>

using namespace marvik;

namespace {

/// About 300 KB of the markup callbook pages are made of: navigation,
/// scripts, nested tables of label/value cells, paragraphs with entities.
QByteArray samplePage()
{
    QByteArray page = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>W1AW</title>"
                      "<style>td{padding:2px}.x{display:none}</style>"
                      "<script>var config = {a: 1, b: '<div>'};</script></head><body>";
    QRandomGenerator rng(42);
    int row = 0;
    while (page.size() < 300 * 1024) {
        page += "<div class=\"nav\"><a href=\"/\">Home</a> | <a href=\"/db\">Search QRZ</a> | "
                "<span class=\"x\">hidden</span></div>\n<table class=\"detail\"><tbody>";
        for (int i = 0; i < 12; ++i, ++row) {
            page += "<tr><td class=\"dh\">Field&nbsp;" + QByteArray::number(row) + "</td><td class=\"di\">  value "
                + QByteArray::number(rng.bounded(100000)) + " &amp; more &eacute;l&egrave;ve </td></tr>\n";
        }
        page += "</tbody></table>\n<p>Operator notes: <b>QSL</b> via bureau, <i>LoTW</i> &mdash; 73!<br>"
                "Second line &lt;ok&gt;</p>\n<div><div><ul><li>one</li><li>two</li></ul></div></div>\n"
                "<script>document.write('x');</script>\n";
    }
    page += "</body></html>";
    return page;
}

QByteArray samplePhoto()
{
    QImage image(4000, 3000, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 4000, 3000);
    gradient.setColorAt(0, QColor(30, 60, 120));
    gradient.setColorAt(1, QColor(220, 180, 90));
    painter.fillRect(image.rect(), gradient);
    QRandomGenerator rng(7);
    for (int i = 0; i < 3000; ++i) {
        painter.fillRect(int(rng.bounded(4000)), int(rng.bounded(3000)), 40, 40,
                         QColor::fromRgb(rng.generate() | 0xff000000u));
    }
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(90);
    writer.write(image);
    return bytes;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);

    const QByteArray page = samplePage();
    const double parseOnly = bench::medianMs(15, [&] {
        GumboOutput *output = gumbo_parse_with_options(&kGumboDefaultOptions, page.constData(), std::size_t(page.size()));
        gumbo_destroy_output(&kGumboDefaultOptions, output);
    });
    QString text;
    const double innerText = bench::medianMs(15, [&] { text = lookup::htmlDecode(lookup::decodePage(page)); });
    std::printf("page of %lld bytes, %lld characters of text\n", qlonglong(page.size()), qlonglong(text.size()));
    std::printf("  gumbo parse alone:            %8.2f ms\n", parseOnly);
    std::printf("  decode + innerText:           %8.2f ms   ratio %.2f\n", innerText, innerText / parseOnly);

    const QByteArray photo = samplePhoto();
    const double decodeOnly = bench::medianMs(5, [&] { QImage::fromData(photo); });
    QSize size;
    const double thumbnail = bench::medianMs(5, [&] { lookup::makeThumbnail(photo, &size); });
    QTemporaryDir dir;
    const app::DataFolder folder(dir.path());
    lookup::StoredPicture stored;
    const double store = bench::medianMs(5, [&] { stored = lookup::storePicture(folder, QStringLiteral("W1AW"), photo); });
    std::printf("photo %dx%d, %lld bytes of JPEG\n", size.width(), size.height(), qlonglong(photo.size()));
    std::printf("  full decode alone:            %8.2f ms\n", decodeOnly);
    std::printf("  thumbnail %dx%d:              %8.2f ms   ratio %.2f\n", stored.thumbnailSize.width(),
                stored.thumbnailSize.height(), thumbnail, thumbnail / decodeOnly);
    std::printf("  store picture + thumbnail:    %8.2f ms   ratio %.2f\n", store, store / decodeOnly);
    return 0;
}
