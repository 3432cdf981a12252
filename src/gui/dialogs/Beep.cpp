// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/Beep.h"

#include <QApplication>

namespace marvik::gui::sound {

namespace {
int g_beeps = 0;
}

void beep()
{
    ++g_beeps;
    QApplication::beep();
}

int beepCount()
{
    return g_beeps;
}

} // namespace marvik::gui::sound
