// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QLabel;
class QProgressBar;
class QStatusBar;
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

    /// The bar at the window's foot: where quiet notes and the work in
    /// progress show, without hiding the chooser.
    void setFoot(QStatusBar *bar, QLabel *busyText, QProgressBar *busyBar);
    /// Something is under way that the user may cancel (a lookup): a busy
    /// indicator with `text`, and the Get button offers to cancel.
    void busy(const QString &text);
    /// The work has ended.
    void idle();
    bool isBusy() const { return m_busy; }
    /// A quiet note at the window's foot for a few seconds: no colour, no
    /// beep, the chooser stays.
    void note(const QString &text);
    QString noteText() const;
    /// A part's own display at the window's right foot (a whole-list
    /// update's progress), kept clear of the notes and of a lookup's busy
    /// indicator, so each can be seen and cancelled on its own.
    void addFootWidget(QWidget *widget);

    QTimer *timer() const { return m_timer; }

signals:
    void busyChanged(bool busy);

private:
    void setAlarmLook(bool alarm);

    QLabel *m_label;
    QList<QPointer<QWidget>> m_covered;
    QPointer<QWidget> m_focus;
    QTimer *m_timer;
    QPointer<QStatusBar> m_foot;
    QPointer<QLabel> m_busyText;
    QPointer<QProgressBar> m_busyBar;
    bool m_busy = false;
};

} // namespace marvik::gui
