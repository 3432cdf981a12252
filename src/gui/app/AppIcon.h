// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

namespace marvik::gui {

/// Marvik's window icon: the desktop theme's "marvik" when it has one,
/// else the PNGs shipped in the share folder.
QIcon applicationIcon();

} // namespace marvik::gui
