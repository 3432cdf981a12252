// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>
#include <QString>

#include <optional>

class QWidget;

namespace marvik::gui {

/// The program's message boxes, all titled "Marvik": information,
/// exclamation, a yes/no question and an input box. Tests script the answer
/// of the next box through the seam below instead of hunting for dialogs.
namespace messages {

void information(QWidget *parent, const QString &text);
void exclamation(QWidget *parent, const QString &text);
/// The About box: `text` as the information box shows it, `details` (rich
/// text: the licence and the credits) beneath, the box wide enough for its
/// title and lines.
void about(QWidget *parent, const QString &text, const QString &details);
/// A yes/no question with the exclamation icon; `defaultYes` false makes No
/// the button Enter presses. True for Yes.
bool question(QWidget *parent, const QString &text, bool defaultYes = false);
/// A question with buttons of its own (captions with "&" access keys), the
/// exclamation icon; returns the index of the button pressed. Escape and
/// closing the box press the last button, Enter the `defaultButton`.
int choose(QWidget *parent, const QString &text, const QStringList &buttons, int defaultButton = 0);
/// An input box with `value` filled in; nothing when cancelled.
std::optional<QString> input(QWidget *parent, const QString &prompt, const QString &value);

/// The captions of the boxes' standard buttons in the current language
/// (with "&" access keys); empty: Qt's own.
struct ButtonCaptions
{
    QString ok, yes, no;
};
void setButtonCaptions(const ButtonCaptions &captions);

/// What a box showed.
struct Shown
{
    enum class Kind { Information, Exclamation, Question, Input, Choice };
    Kind kind = Kind::Information;
    QString title;
    QString text;
    QString value;        ///< the input box's filled-in value
    bool defaultYes = false;
    QStringList buttons;  ///< a choice's buttons
};

/// The test seam: while answers are queued, a box is not shown but recorded
/// and answered from the queue (Yes/OK: true; an input box: the text, or
/// nothing for Cancel).
struct Answer
{
    bool yes = true;
    std::optional<QString> text;
    int choice = 0; ///< the button a choice is answered with
};
void answerNext(const Answer &answer);
/// The boxes recorded since the last call; clears the record.
QList<Shown> takeShown();
/// Forgets queued answers and the record.
void resetSeam();

} // namespace messages

} // namespace marvik::gui
