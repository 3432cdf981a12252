// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>

class QWidget;

namespace marvik::gui {

class ChameleonButton;

/// The face of every dialog button.
inline const QColor kDialogFace{170, 197, 255};
/// The face of the new-version question's Yes while the mouse is over it.
inline const QColor kHoveredFace{150, 190, 255};

/// A dialog button on the light blue face. Its caption is black whatever
/// the desktop's palette: a dark theme's light text would vanish on it.
ChameleonButton *dialogButton(const QString &objectName, QWidget *parent);

} // namespace marvik::gui
