// SPDX-License-Identifier: GPL-3.0-or-later
// How page decoding time grows with the page's size for the shapes a hostile
// page takes, up to the page size cap: milliseconds, milliseconds per MiB,
// and the ratio of the per-byte time at the cap to that of the smallest
// size (1.0 is linear). An ordinary page of the same sizes is the baseline.
// Times are the processor time of this process (median of three), so a
// machine busy with other work still measures the decoding alone.
#include "core/lookup/HtmlText.h"
#include "core/lookup/MarkupGuard.h"
#include "core/lookup/NamedDownloads.h"

#include <QByteArray>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

using namespace marvik;

namespace {

/// Repeats `unit` to `size` bytes after `head`.
QByteArray repeated(const QByteArray &head, const QByteArray &unit, qsizetype size, const QByteArray &tail = {})
{
    QByteArray page = head;
    page.reserve(size + unit.size());
    while (page.size() + unit.size() + tail.size() <= size)
        page += unit;
    return page + tail;
}

/// Callbook-like markup: tables of label and value cells, links, paragraphs.
QByteArray ordinary(qsizetype size)
{
    return repeated("<html><body>",
                    "<div class=\"nav\"><a href=\"/db\">Search</a></div><table class=\"d\"><tr><td class=\"h\">Name"
                    "</td><td>Hiram &amp; co</td></tr><tr><td>Grid</td><td>FN31pr</td></tr></table><p>QSL via "
                    "<b>bureau</b><br>73</p>\n",
                    size, "</body></html>");
}

/// The median processor time of three calls, in milliseconds.
double cpuMs(const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < 3; ++i) {
        const std::clock_t start = std::clock();
        work();
        times.push_back(double(std::clock() - start) * 1000.0 / CLOCKS_PER_SEC);
    }
    std::sort(times.begin(), times.end());
    return times[1];
}

struct Shape
{
    const char *name;
    std::function<QByteArray(qsizetype)> make;
};

QByteArray attributes(int count)
{
    QByteArray tag = "<span";
    for (int i = 0; i < count; ++i)
        tag += " a" + QByteArray::number(i) + "=\"v\"";
    return tag + ">x</span>";
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QByteArray deep = QByteArray("<span>").repeated(lookup::kMaxMarkupDepth - 1);
    const QList<Shape> shapes = {
        {"ordinary page", ordinary},
        {"self-closing <div/>", [](qsizetype n) -> QByteArray { return repeated({}, "<div/>", n); }},
        {"unclosed <div>x", [](qsizetype n) -> QByteArray { return repeated({}, "<div>x", n); }},
        {"deeply nested", [](qsizetype n) -> QByteArray { return repeated({}, "<div><span><b>", n / 2) + repeated({}, "</b></span></div>", n / 2); }},
        {"many attributes, one tag", [](qsizetype n) -> QByteArray { return repeated("<div", " a=\"v\" b c", n - 8, ">x</div>"); }},
        {"many attributes, every tag", [](qsizetype n) -> QByteArray { return repeated({}, attributes(40), n); }},
        {"long attribute value", [](qsizetype n) -> QByteArray { return "<div title=\"" + QByteArray(n - 20, 'v') + "\">x</div>"; }},
        {"many entities", [](qsizetype n) -> QByteArray { return repeated({}, "&amp;&eacute;&#x41;", n); }},
        {"huge text node", [](qsizetype n) -> QByteArray { return QByteArray(n, 'x'); }},
        {"long comment", [](qsizetype n) -> QByteArray { return "<!--" + QByteArray(n - 7, 'c') + "-->"; }},
        {"stray end tags, deep", [&](qsizetype n) -> QByteArray { return repeated(deep, "</x>", n); }},
        {"paragraphs, deep", [&](qsizetype n) -> QByteArray { return repeated(deep, "<p>", n); }},
        {"list items in divs", [](qsizetype n) -> QByteArray { return repeated(QByteArray("<div>").repeated(lookup::kMaxMarkupDepth - 1), "<li>", n); }},
        {"formatting reopened per <p>", [](qsizetype n) -> QByteArray {
            QByteArray head = "<p>";
            for (int i = 0; i < 500; ++i)
                head += "<b x=" + QByteArray::number(i) + '>';
            return repeated(head, "<p>t", n);
        }},
        {"isindex", [](qsizetype n) -> QByteArray { return repeated({}, "<isindex>", n); }},
    };
    const qsizetype sizes[] = {256 * 1024, 1024 * 1024, 2 * 1024 * 1024, lookup::kPageSizeLimit};

    std::printf("%-28s %10s %10s %10s %10s %10s\n", "shape", "256 KiB", "1 MiB", "2 MiB", "4 MiB", "growth");
    double worstAtCap = 0;
    for (const Shape &shape : shapes) {
        std::printf("%-28s", shape.name);
        double firstPerMiB = 0;
        double lastPerMiB = 0;
        for (qsizetype size : sizes) {
            const QByteArray page = shape.make(size);
            lookup::DecodedPage decoded;
            const double ms = cpuMs([&] { decoded = lookup::decodePageText(page, {}, {}); });
            const double perMiB = ms * 1024 * 1024 / double(page.size());
            if (size == sizes[0])
                firstPerMiB = perMiB;
            lastPerMiB = perMiB;
            if (size == lookup::kPageSizeLimit)
                worstAtCap = std::max(worstAtCap, ms);
            std::printf(" %7.0f ms%s", ms, decoded.error == lookup::PageTextError::None ? "" : "!"); // ! no text
        }
        std::printf(" %9.2fx   (%.0f ms/MiB at the cap)\n", lastPerMiB / firstPerMiB, lastPerMiB);
    }

    std::printf("\nslowest page at the %lld-byte cap: %.0f ms\n", qlonglong(lookup::kPageSizeLimit), worstAtCap);
    return 0;
}
