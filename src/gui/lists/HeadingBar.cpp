// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/HeadingBar.h"

#include <QLabel>
#include <QPainter>

namespace marvik::gui {

HeadingBar::HeadingBar(QWidget *parent)
    : QWidget(parent)
{
    for (int i = 0; i < kColumns; ++i) {
        auto *label = new QLabel(this);
        label->setObjectName(QStringLiteral("lblGrid%1").arg(i));
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        m_labels.append(label);
    }
    setFixedHeight(kHeight);
}

void HeadingBar::setCaptions(const QStringList &captions)
{
    for (int i = 0; i < kColumns; ++i)
        m_labels[i]->setText(captions.value(i));
}

void HeadingBar::setEdges(const QList<int> &edges)
{
    m_edges = edges;
    layoutLabels();
    update();
}

void HeadingBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutLabels();
}

void HeadingBar::layoutLabels()
{
    for (int i = 0; i < m_labels.size(); ++i) {
        QLabel *label = m_labels[i];
        if (i + 1 >= m_edges.size()) {
            label->hide();
            continue;
        }
        label->setGeometry(m_edges[i] + 4, 1, m_edges[i + 1] - m_edges[i] - 5, kHeight - 2);
        label->show();
    }
}

void HeadingBar::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const int right = width() - 1;
    const int bottom = kHeight - 1;
    // A raised look: white on the top and left of each cell, black on the
    // bottom and right.
    p.setPen(Qt::white);
    p.drawLine(0, 0, right, 0);
    p.drawLine(1, 0, 1, bottom);
    p.setPen(Qt::black);
    p.drawLine(0, bottom, right, bottom);
    for (int x : std::as_const(m_edges)) {
        p.setPen(Qt::black);
        p.drawLine(x, 0, x, bottom);
        p.setPen(Qt::white);
        p.drawLine(x + 1, 1, x + 1, bottom - 1);
    }
}

} // namespace marvik::gui
