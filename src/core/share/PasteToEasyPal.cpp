// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/share/PasteToEasyPal.h"

#include "core/app/Log.h"
#include "core/i18n/Texts.h"

namespace marvik::share {

namespace {

// The waits of the Windows program, in milliseconds: EasyPal under Wine needs
// them to come forward and take the focus before the key arrives.
constexpr int kAfterForeground = 200;
constexpr int kAfterRestore = 500;
constexpr int kBeforeKey = 500;
constexpr int kAfterKey = 500;

} // namespace

QString PasteToEasyPal::easyPalTitle()
{
    return QStringLiteral("EasyPal");
}

PasteToEasyPal::PasteToEasyPal(TransmitterWindow *window, QObject *parent)
    : QObject(parent)
    , m_window(window)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PasteToEasyPal::advance);
}

bool PasteToEasyPal::start(const QString &title)
{
    if (isRunning())
        return false;
    m_target = 0;
    if (!m_window) {
        // Nothing to find or press here; the caller tells the user at once.
        m_outcome = Outcome::NoBackend;
        waitThen(0, Step::Done);
        return true;
    }
    m_target = m_window->find(title);
    if (m_target == 0) {
        // No message when EasyPal is not running: the text stays on the
        // clipboard for a paste by hand.
        qCDebug(lcShare) << "no window titled" << title;
        m_outcome = m_window->seesEveryWindow() ? Outcome::NotFound : Outcome::OutOfSight;
        waitThen(kAfterKey, Step::Done);
        return true;
    }
    const bool minimised = m_window->isMinimised(m_target);
    qCDebug(lcShare) << "bringing" << title << "forward, minimised:" << minimised;
    m_window->bringToFront(m_target);
    waitThen(kAfterForeground, Step::Restore);
    return true;
}

void PasteToEasyPal::waitThen(int milliseconds, Step next)
{
    m_step = next;
    m_timer.start(milliseconds);
}

void PasteToEasyPal::advance()
{
    switch (m_step) {
    case Step::Idle:
        return;
    case Step::Restore:
        m_window->restore(m_target);
        waitThen(kAfterRestore, Step::Settled);
        return;
    case Step::Settled:
        // The window is up; the key follows after a further wait.
        waitThen(kBeforeKey, Step::SendKey);
        return;
    case Step::SendKey:
        m_outcome = m_window->sendKey(Qt::Key_F7) ? Outcome::KeySent : Outcome::KeyFailed;
        if (m_outcome == Outcome::KeyFailed)
            qCWarning(lcShare) << "EasyPal is in front but F7 could not be sent";
        waitThen(kAfterKey, Step::Done);
        return;
    case Step::Done:
        m_step = Step::Idle;
        emit finished(m_outcome);
        return;
    }
}

QString PasteToEasyPal::hint(Outcome outcome, const i18n::Texts &texts)
{
    switch (outcome) {
    case Outcome::NoBackend:
    case Outcome::OutOfSight:
    case Outcome::KeyFailed:
        return texts[i18n::TextId::PasteByHand];
    case Outcome::KeySent:
    case Outcome::NotFound:
        break;
    }
    return {};
}

} // namespace marvik::share
