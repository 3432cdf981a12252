// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace marvik::lists {

/// Makes the calling thread a list reader: one that works behind the
/// window, a little nicer than it, and that gives way at
/// `giveWayToTheWindow()`. Lasts as long as the thread.
void becomeListReader();

/// A point in a long step of a list reader (every few hundred rows, every
/// few hundred files of the thumbnail folder) where it hands the processor
/// to any thread that has been woken meanwhile. Nothing on other threads.
///
/// Being nicer is not enough on its own: a thread the system has just
/// woken waits for the running one's time slice to end, and with two
/// readers on two cores the window's thread, waiting for the display
/// server's answer before it paints, sat out whole slices of both.
void giveWayToTheWindow();

} // namespace marvik::lists
