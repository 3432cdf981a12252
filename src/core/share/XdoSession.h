// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The X11 side of the transmitter window, on libxdo and Xlib. This header and
// its source file see no Qt: Xlib's macros (None, Bool, KeyPress, ...) clash
// with Qt's names, so the two never meet in one translation unit.

#include <memory>
#include <string>

namespace marvik::share::x11 {

/// One connection to the X display with libxdo on it.
class XdoSession
{
public:
    /// Opens the display named by DISPLAY; null when there is none.
    static std::unique_ptr<XdoSession> open();
    ~XdoSession();
    XdoSession(const XdoSession &) = delete;
    XdoSession &operator=(const XdoSession &) = delete;

    /// The first top-level window whose title equals `utf8Title` byte for byte; 0 when none.
    unsigned long find(const std::string &utf8Title);
    bool isMinimised(unsigned long window);
    void bringToFront(unsigned long window);
    void restore(unsigned long window);
    /// Presses and releases the key with this X keysym name ("F7") for the
    /// window that has the focus.
    bool sendKey(const char *keysymName);

private:
    struct Private;
    explicit XdoSession(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d;
};

} // namespace marvik::share::x11
