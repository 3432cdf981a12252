// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/StatusLine.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>
#include <QTimer>

namespace marvik::gui {

namespace {
// How long an alarm stays before the status line goes back to rest.
constexpr int kAlarmMs = 4000;
// How long a quiet note stays at the window's foot.
constexpr int kNoteMs = 8000;
} // namespace

StatusLine::StatusLine(QLabel *label, QList<QWidget *> covered, QWidget *focus, QObject *parent)
    : QObject(parent)
    , m_label(label)
    , m_focus(focus)
    , m_timer(new QTimer(this))
{
    for (QWidget *w : covered)
        m_covered.append(w);
    m_timer->setObjectName(QStringLiteral("Timer3"));
    m_timer->setSingleShot(true);
    m_timer->setInterval(kAlarmMs);
    connect(m_timer, &QTimer::timeout, this, &StatusLine::toRest);
    m_label->setAutoFillBackground(true);
    setAlarmLook(false);
    m_label->hide();
}

void StatusLine::setAlarmLook(bool alarm)
{
    QPalette pal = m_label->palette();
    pal.setColor(QPalette::Window, alarm ? QColor(255, 0, 0) : QColor(Qt::white));
    pal.setColor(QPalette::WindowText, alarm ? QColor(Qt::white) : QColor(Qt::black));
    m_label->setPalette(pal);
}

void StatusLine::showSteady(const QString &text)
{
    setAlarmLook(true);
    m_label->setText(text);
    m_label->show();
    m_label->raise();
    for (QWidget *w : std::as_const(m_covered)) {
        if (w)
            w->hide();
    }
}

void StatusLine::alarm(const QString &text, bool beep)
{
    showSteady(text);
    if (m_focus)
        m_focus->setFocus();
    if (beep)
        QApplication::beep();
    m_timer->start();
}

void StatusLine::toRest()
{
    m_timer->stop();
    setAlarmLook(false);
    m_label->setText(QString());
    m_label->hide();
    for (QWidget *w : std::as_const(m_covered)) {
        if (w)
            w->show();
    }
}

bool StatusLine::isShowing() const
{
    return m_label->isVisible();
}

QString StatusLine::text() const
{
    return m_label->text();
}

void StatusLine::setFoot(QStatusBar *bar, QLabel *busyText, QProgressBar *busyBar)
{
    m_foot = bar;
    m_busyText = busyText;
    m_busyBar = busyBar;
    m_busyText->hide();
    m_busyBar->hide();
}

void StatusLine::busy(const QString &text)
{
    if (m_busyText) {
        m_busyText->setText(text);
        m_busyText->show();
        m_busyBar->show();
    }
    if (!m_busy) {
        m_busy = true;
        emit busyChanged(true);
    }
}

void StatusLine::idle()
{
    if (m_busyText) {
        m_busyText->hide();
        m_busyBar->hide();
    }
    if (m_busy) {
        m_busy = false;
        emit busyChanged(false);
    }
}

void StatusLine::note(const QString &text)
{
    if (m_foot)
        m_foot->showMessage(text, kNoteMs);
}

void StatusLine::addFootWidget(QWidget *widget)
{
    if (m_foot)
        m_foot->addPermanentWidget(widget);
}

QString StatusLine::noteText() const
{
    return m_foot ? m_foot->currentMessage() : QString();
}

} // namespace marvik::gui
