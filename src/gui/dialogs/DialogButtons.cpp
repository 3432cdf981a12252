// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/DialogButtons.h"

#include "gui/widgets/ChameleonButton.h"

namespace marvik::gui {

ChameleonButton *dialogButton(const QString &objectName, QWidget *parent)
{
    auto *button = new ChameleonButton(parent);
    button->setObjectName(objectName);
    button->setBackColor(kDialogFace);
    button->setForeColor(Qt::black);
    return button;
}

} // namespace marvik::gui
