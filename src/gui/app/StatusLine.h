// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QLabel;
class QTimer;
class QWidget;

namespace marvik::gui {

/// The main window's status line, `lblStatus`: at rest it is hidden and the
/// list chooser and sort options show; an alarm shows white on red in their
/// place until `Timer3` puts it away. Parts report through this object and
/// never touch the window's widgets.
class StatusLine : public QObject
{
    Q_OBJECT

public:
    /// `label` is the status line; `covered` are hidden while it shows;
    /// `focus` gets the keyboard focus with each alarm.
    StatusLine(QLabel *label, QList<QWidget *> covered, QWidget *focus, QObject *parent = nullptr);

    /// White on red in place of the chooser, the focus to the callsign box,
    /// `Timer3` (re)started; a second alarm extends the display.
    void alarm(const QString &text, bool beep = false);
    /// The alarm look without the timer (the blink of an entry already in
    /// the list runs its own).
    void showSteady(const QString &text);
    /// Back to rest: hidden, caption "", chooser and sort options back.
    void toRest();
    bool isShowing() const;
    QString text() const;

    QTimer *timer() const { return m_timer; }

private:
    void setAlarmLook(bool alarm);

    QLabel *m_label;
    QList<QPointer<QWidget>> m_covered;
    QPointer<QWidget> m_focus;
    QTimer *m_timer;
};

} // namespace marvik::gui
