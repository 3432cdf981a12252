// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

namespace marvik::gui {

/// Draws a grid cell: its own back colour even on the selected row (the
/// nickname mark and the already-in-list blink must stay visible) and, in
/// the first-name cell, the operator's thumbnail at the right.
class ThumbnailDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Thumbnails are drawn this high, in pixels.
    static constexpr int kThumbnailHeight = 16;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    /// Draws a callsign or a bearing too wide for its column in a smaller
    /// font, so that it shows whole (see the .cpp).
    static void fitText(QStyleOptionViewItem &opt);
};

} // namespace marvik::gui
