// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The system beep of the dialogs, counted so a test can tell that a
/// dialog beeped without hearing it.
namespace marvik::gui::sound {

void beep();
/// Beeps since the program started.
int beepCount();

} // namespace marvik::gui::sound
