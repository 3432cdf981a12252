// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/ThumbnailDelegate.h"

#include "core/lists/CallListModel.h"
#include "core/lists/Thumbnails.h"

#include <QImage>
#include <QPainter>

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
    QStyledItemDelegate::paint(painter, opt, index);
    if (!picture.isNull()) {
        painter->save();
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawImage(picture, thumb);
        painter->restore();
    }
}

} // namespace marvik::gui
