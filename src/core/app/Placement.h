// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QSettings;

namespace marvik::app {

/// The main window's place and size in twips (15 per pixel), kept in the
/// per-user settings store under group "Me".
struct Placement
{
    static constexpr int kTwipsPerPixel = 15;

    int left = 4000;
    int top = 3000;
    int width = 6000;
    int height = 7000;

    /// Reads "Left", "Top", "Width", "Height"; a missing key keeps its default.
    static Placement load(QSettings &store);
    void save(QSettings &store) const;
};

} // namespace marvik::app
