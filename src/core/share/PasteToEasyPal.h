// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/share/TransmitterWindow.h"

#include <QObject>
#include <QTimer>

namespace marvik::i18n {
class Texts;
}

namespace marvik::share {

/// Brings EasyPal forward and presses its paste key, F7, after the data is
/// on the clipboard. The steps and waits are those the operators know from
/// the Windows program (find the window, read whether it is minimised, bring
/// it to the front, 0.2 s, restore it, 0.5 s, then 0.5 s, F7, 0.5 s), but
/// the waits run on timers, so Marvik keeps painting meanwhile. EasyPal
/// picks the clipboard up itself when F7 arrives.
class PasteToEasyPal : public QObject
{
    Q_OBJECT

public:
    enum class Outcome {
        KeySent, ///< EasyPal was brought forward and F7 sent
        NotFound, ///< no window titled exactly "EasyPal": nothing sent, nothing to say
        OutOfSight, ///< none found, but EasyPal may run where Marvik cannot see: the user must press F7
        KeyFailed, ///< EasyPal was brought forward but the key could not be sent
        NoBackend, ///< windows cannot be driven here: the user must press F7
    };
    Q_ENUM(Outcome)

    /// The title EasyPal's main window carries.
    static QString easyPalTitle();

    /// `window` may be null (no backend on this window system); it must
    /// outlive this object.
    explicit PasteToEasyPal(TransmitterWindow *window, QObject *parent = nullptr);

    /// Starts the sequence for the window titled `title`. False, and nothing
    /// happens, while a sequence is still running.
    bool start(const QString &title = easyPalTitle());
    bool isRunning() const { return m_step != Step::Idle; }

    /// The one sentence the status line shows after a paste: what to press
    /// in EasyPal when Marvik could not press it; empty otherwise.
    static QString hint(Outcome outcome, const i18n::Texts &texts);

signals:
    /// The sequence is over; `outcome` says whether F7 was sent.
    void finished(marvik::share::PasteToEasyPal::Outcome outcome);

private:
    enum class Step { Idle, Restore, Settled, SendKey, Done };
    void advance();
    void waitThen(int milliseconds, Step next);

    TransmitterWindow *m_window;
    QTimer m_timer;
    Step m_step = Step::Idle;
    WindowId m_target = 0;
    Outcome m_outcome = Outcome::NotFound;
};

} // namespace marvik::share
