// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace marvik::gui {

/// The whole-list update's display at the window's foot (`refreshProgress`):
/// "call n of m: CALL, about T left", a bar, and its own Cancel button,
/// apart from the Get button's Cancel, which stops a single lookup only.
class RefreshProgress : public QWidget
{
    Q_OBJECT

public:
    explicit RefreshProgress(QWidget *parent = nullptr);

    /// Call `n` of `m` is being looked up; `text` says so in the user's words.
    void setProgress(int n, int m, const QString &text);
    void setCancelText(const QString &text);
    QString text() const;

signals:
    void cancelClicked();

private:
    QLabel *m_label;
    QProgressBar *m_bar;
    QPushButton *m_cancel;
};

} // namespace marvik::gui
