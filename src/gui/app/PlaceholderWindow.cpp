// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaceholderWindow.h"

#include <QLabel>
#include <QVBoxLayout>

namespace marvik::gui {

PlaceholderWindow::PlaceholderWindow(const QString &summary, QWidget *parent)
    : QWidget(parent)
{
    setWindowTitle(QStringLiteral("Marvik  3.12"));
    auto *layout = new QVBoxLayout(this);
    auto *label = new QLabel(summary, this);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(label);
    resize(420, 220);
}

} // namespace marvik::gui
