// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/widgets/ElidingLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace marvik::gui {

ElidingLabel::ElidingLabel(QWidget *parent)
    : QLabel(parent)
{
    setWordWrap(false);
    // Any width will do: the text is cut to what there is.
    setMinimumWidth(1);
}

bool ElidingLabel::isElided() const
{
    return fontMetrics().horizontalAdvance(text()) > contentsRect().width() - 2 * margin() - 2 * indent();
}

void ElidingLabel::paintEvent(QPaintEvent *event)
{
    if (!isElided()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    drawFrame(&painter);
    const QRect area = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, area.width());
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(area, int(alignment()) | Qt::TextSingleLine, shown);
}

bool ElidingLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        if (isElided())
            QToolTip::showText(help->globalPos(), text(), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QLabel::event(event);
}

} // namespace marvik::gui
