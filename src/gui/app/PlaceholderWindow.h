// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace marvik::gui {

/// Shown until the main window exists: says honestly what Marvik does so far.
class PlaceholderWindow : public QWidget
{
    Q_OBJECT
public:
    explicit PlaceholderWindow(const QString &summary, QWidget *parent = nullptr);
};

} // namespace marvik::gui
