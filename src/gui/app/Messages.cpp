// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/Messages.h"

#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QQueue>

#include <algorithm>

namespace marvik::gui::messages {

namespace {

const QString kTitle = QStringLiteral("Marvik");

ButtonCaptions &captions()
{
    static ButtonCaptions c;
    return c;
}

/// Puts the current language's captions on a box's standard buttons.
void caption(QMessageBox &box)
{
    const ButtonCaptions &c = captions();
    for (const auto &[button, text] : {std::pair{QMessageBox::Ok, c.ok}, std::pair{QMessageBox::Yes, c.yes},
                                       std::pair{QMessageBox::No, c.no}}) {
        if (QAbstractButton *b = box.button(button); b && !text.isEmpty())
            b->setText(text);
    }
}

struct Seam
{
    QQueue<Answer> answers;
    QList<Shown> shown;
};

Seam &seam()
{
    static Seam s;
    return s;
}

/// Answers from the queue when a test queued one.
std::optional<Answer> scripted(const Shown &box)
{
    if (seam().answers.isEmpty())
        return std::nullopt;
    seam().shown.append(box);
    return seam().answers.dequeue();
}

void showBox(QWidget *parent, QMessageBox::Icon icon, Shown::Kind kind, const QString &text)
{
    if (scripted(Shown{kind, kTitle, text, {}, true, {}}))
        return;
    QMessageBox box(icon, kTitle, text, QMessageBox::Ok, parent);
    caption(box);
    box.exec();
}

} // namespace

void information(QWidget *parent, const QString &text)
{
    showBox(parent, QMessageBox::Information, Shown::Kind::Information, text);
}

void setButtonCaptions(const ButtonCaptions &c)
{
    captions() = c;
}

void about(QWidget *parent, const QString &text, const QString &details)
{
    if (scripted(Shown{Shown::Kind::Information, kTitle, text, {}, true, {}}))
        return;
    QMessageBox box(QMessageBox::Information, kTitle, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(details);
    box.setTextInteractionFlags(Qt::TextBrowserInteraction);
    caption(box);
    // A message box sizes itself to its text alone; its title and the
    // frame's buttons need room too.
    const int titleWidth = box.fontMetrics().horizontalAdvance(kTitle) * 3;
    box.setStyleSheet(QStringLiteral("QLabel { min-width: %1px; }").arg(std::max(titleWidth, 320)));
    box.exec();
}

void exclamation(QWidget *parent, const QString &text)
{
    showBox(parent, QMessageBox::Warning, Shown::Kind::Exclamation, text);
}

bool question(QWidget *parent, const QString &text, bool defaultYes)
{
    if (const auto answer = scripted(Shown{Shown::Kind::Question, kTitle, text, {}, defaultYes, {}}))
        return answer->yes;
    QMessageBox box(QMessageBox::Warning, kTitle, text, QMessageBox::Yes | QMessageBox::No, parent);
    box.setDefaultButton(defaultYes ? QMessageBox::Yes : QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    caption(box);
    return box.exec() == QMessageBox::Yes;
}

int choose(QWidget *parent, const QString &text, const QStringList &buttons, int defaultButton)
{
    Shown shown{Shown::Kind::Choice, kTitle, text, {}, false, buttons};
    if (const auto answer = scripted(shown))
        return answer->choice;
    QMessageBox box(QMessageBox::Warning, kTitle, text, QMessageBox::NoButton, parent);
    QList<QAbstractButton *> made;
    for (int i = 0; i < buttons.size(); ++i)
        made.append(box.addButton(buttons[i], i == buttons.size() - 1 ? QMessageBox::RejectRole : QMessageBox::AcceptRole));
    if (defaultButton >= 0 && defaultButton < made.size())
        box.setDefaultButton(qobject_cast<QPushButton *>(made[defaultButton]));
    box.setEscapeButton(made.isEmpty() ? nullptr : made.last());
    box.exec();
    const int pressed = int(made.indexOf(box.clickedButton()));
    return pressed < 0 ? int(buttons.size()) - 1 : pressed;
}

std::optional<QString> input(QWidget *parent, const QString &prompt, const QString &value)
{
    if (const auto answer = scripted(Shown{Shown::Kind::Input, kTitle, prompt, value, true, {}}))
        return answer->yes ? answer->text : std::nullopt;
    QInputDialog dialog(parent);
    dialog.setWindowTitle(kTitle);
    dialog.setLabelText(prompt);
    dialog.setTextValue(value);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.textValue();
}

void answerNext(const Answer &answer)
{
    seam().answers.enqueue(answer);
}

QList<Shown> takeShown()
{
    return std::exchange(seam().shown, {});
}

void resetSeam()
{
    seam().answers.clear();
    seam().shown.clear();
}

} // namespace marvik::gui::messages
