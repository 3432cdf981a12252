// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace marvik::gui {

/// A one-line label that ends a text too long for it with "…" instead of
/// cutting it off, and shows the whole text as its tooltip then. Its text()
/// stays the whole text.
class ElidingLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidingLabel(QWidget *parent = nullptr);

    /// Whether the text is shown cut now.
    bool isElided() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
};

} // namespace marvik::gui
