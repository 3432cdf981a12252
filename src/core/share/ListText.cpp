// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/share/ListText.h"

#include "core/lists/CallListModel.h"

#include <QFontMetricsF>

#include <array>

namespace marvik::share {

namespace {

// The stops are pixels from the start of the line, marker included, so
// that a marked and an unmarked row line up whatever the marker's width.
constexpr std::array<qreal, 3> kStops {100, 200, 270};

const QString kMarked = QStringLiteral("\u00BB ");
const QString kUnmarked = QStringLiteral("   ");
const QString kLineEnd = QStringLiteral("\r\n");

void padToStop(QString &line, qreal stop, const QFontMetricsF &metrics)
{
    // One blank at a time and measure the whole line again: kerning and
    // shaping make the width of a line other than the sum of its pieces.
    do
        line += u' ';
    while (metrics.horizontalAdvance(line) < stop);
}

} // namespace

QList<ListTextRow> listTextRows(const lists::CallListModel &model)
{
    QList<ListTextRow> rows;
    rows.reserve(model.rowCount());
    using lists::Column;
    for (int row = 0; row < model.rowCount(); ++row) {
        rows.append({model.field(row, Column::Callsign), model.field(row, Column::FirstName),
            model.field(row, Column::Azimuth), model.field(row, Column::City),
            model.cellBackground(row, Column::Callsign) == lists::kMarkColour});
    }
    return rows;
}

QString composeListText(const QList<ListTextRow> &rows, const QFont &font)
{
    const QFontMetricsF metrics(font);
    QString text = kLineEnd;
    for (const ListTextRow &row : rows) {
        QString line = row.marked ? kMarked : kUnmarked;
        const std::array<const QString *, 3> padded {&row.callsign, &row.firstName, &row.azimuth};
        for (std::size_t i = 0; i < padded.size(); ++i) {
            line += *padded[i];
            padToStop(line, kStops[i], metrics);
        }
        line += row.city;
        text += line + kLineEnd;
    }
    return text;
}

QFont listTextFont()
{
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(11);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace marvik::share
