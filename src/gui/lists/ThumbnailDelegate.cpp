// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/ThumbnailDelegate.h"

#include "core/lists/CallListModel.h"
#include "core/lists/Thumbnails.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace marvik::gui {

void ThumbnailDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    const QVariant back = index.data(Qt::BackgroundRole);
    const bool selected = opt.state & QStyle::State_Selected;
    // The whole cell is filled here, so the part under the thumbnail gets
    // the same colour as the text part.
    if (back.isValid()) {
        // A coloured cell keeps its colour on the selected row (the nickname
        // mark and the blink must stay visible); a highlight frame shows the
        // selection instead.
        if (selected) {
            painter->fillRect(opt.rect, opt.palette.highlight());
            painter->fillRect(opt.rect.adjusted(1, 1, -1, -1), back.value<QColor>());
        } else {
            painter->fillRect(opt.rect, back.value<QColor>());
        }
        opt.state &= ~QStyle::State_Selected;
        opt.backgroundBrush = QBrush();
    } else if (selected) {
        painter->fillRect(opt.rect, opt.palette.highlight());
    }

    QImage thumb = index.data(lists::CallListModel::ThumbnailRole).value<QImage>();
    QRect picture;
    if (!thumb.isNull() && thumb.height() > 0) {
        const int h = std::min(kThumbnailHeight, opt.rect.height());
        const int w = std::min(opt.rect.width() / 2, thumb.width() * h / thumb.height());
        picture = QRect(opt.rect.right() - w - 1, opt.rect.top() + (opt.rect.height() - h) / 2, w, h);
        opt.rect.setRight(picture.left() - 2);
        // The stored thumbnail is 16 pixels high; on a screen of a higher
        // scale it is drawn from the picture behind it, decoded to the
        // device pixels the cell has (both kept in the shared cache).
        const qreal scale = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        if (scale > 1.0 || thumb.height() < h) {
            const QString full = index.data(lists::CallListModel::PicturePathRole).toString();
            const QImage sharp = full.isEmpty() ? QImage() : lists::thumbnailCache::image(full, qRound(h * scale));
            if (!sharp.isNull())
                thumb = sharp;
        }
    }
    fitText(opt);
    QStyledItemDelegate::paint(painter, opt, index);
    if (!picture.isNull()) {
        painter->save();
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawImage(picture, thumb);
        painter->restore();
    }
}

void ThumbnailDelegate::fitText(QStyleOptionViewItem &opt)
{
    // The callsign and the bearing are read whole or not at all. Their
    // columns keep the form's widths, and a larger desktop font would cut
    // them to "DL1A…" and "2…": they are drawn smaller instead, down to
    // seven tenths of the font, and cut only beyond that.
    const auto column = lists::Column(opt.index.column());
    if (column != lists::Column::Callsign && column != lists::Column::Azimuth)
        return;
    const QStyle *style = opt.widget ? opt.widget->style() : QApplication::style();
    const int room = opt.rect.width() - 2 * (style->pixelMetric(QStyle::PM_FocusFrameHMargin, &opt, opt.widget) + 1);
    // Every bearing of a column at one size: the widest figures decide.
    const QString text = column == lists::Column::Azimuth ? QStringLiteral("888\u00B0") : opt.text;
    if (room <= 0 || QFontMetrics(opt.font).horizontalAdvance(text) <= room)
        return;
    QFont smaller = opt.font;
    const bool points = opt.font.pointSizeF() > 0;
    const qreal size = points ? opt.font.pointSizeF() : qreal(opt.font.pixelSize());
    for (int twentieths = 19; twentieths >= 14; --twentieths) {
        const qreal factor = twentieths / 20.0;
        if (points)
            smaller.setPointSizeF(size * factor);
        else
            smaller.setPixelSize(std::max(1, qRound(size * factor)));
        if (QFontMetrics(smaller).horizontalAdvance(text) <= room)
            break;
    }
    opt.font = smaller;
    opt.fontMetrics = QFontMetrics(smaller);
}

} // namespace marvik::gui
