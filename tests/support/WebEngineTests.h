// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>

namespace marvik::test {

/// For a test with a browser window, before its QApplication is made: the
/// web engine's helper processes run without a sandbox (tests may run as
/// root), without a graphics card and without reaching out to the internet
/// on their own. OpenGL is left to the program, which prepares it when the
/// first web window opens, as it does for a user.
inline void prepareWebEngine()
{
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
            "--no-sandbox --disable-gpu --disable-background-networking --disable-component-update");
}

} // namespace marvik::test
