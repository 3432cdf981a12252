// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>

namespace marvik::share {

/// A top-level window of another program, as the window system knows it; 0: none.
using WindowId = quint64;

/// The window of the transmitter program (EasyPal) as Marvik drives it: found
/// by its title, brought forward and sent the paste key. One implementation
/// per window system; everything here runs on the user-interface thread.
class TransmitterWindow
{
public:
    virtual ~TransmitterWindow();

    /// The top-level window whose title is exactly `title` (case and all); 0 when none.
    virtual WindowId find(const QString &title) = 0;
    /// Whether the window is minimised: what it will be restored from.
    virtual bool isMinimised(WindowId window) = 0;
    /// Raises the window above the others and gives it the keyboard focus.
    virtual void bringToFront(WindowId window) = 0;
    /// Shows the window in its normal state again when it is minimised.
    virtual void restore(WindowId window) = 0;
    /// False where some programs' windows are out of this backend's sight (X11
    /// inside a Wayland session sees no Wayland-native window, such as a Wine
    /// program on Wine's Wayland driver): a window not found may still be there.
    virtual bool seesEveryWindow() const = 0;
    /// Presses and releases one key for whatever window has the focus, without
    /// waiting for it to be handled. False when the key could not be sent.
    virtual bool sendKey(Qt::Key key) = 0;
};

/// The backend for the window system this session runs on, or null where
/// Marvik cannot drive other programs' windows (no X display: a Wayland
/// session without XWayland, or a build without the X11 backend).
std::unique_ptr<TransmitterWindow> createTransmitterWindow();

} // namespace marvik::share
