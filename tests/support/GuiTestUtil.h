// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QInputDialog>
#include <QDir>
#include <QMessageBox>
#include <QPixmap>
#include <QString>
#include <QWidget>
#include <QTimer>

#include <functional>

namespace marvik::test {

/// What a modal dialog showed before it was answered.
struct SeenDialog
{
    bool seen = false;
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    QString informative; ///< a message box's informative text
    QStringList buttonTexts; ///< a message box's button captions, in its order
    QSize size;          ///< the dialog's size as shown
};

/// Watches for the next modal dialog and answers it: a message box by the
/// given button, an input dialog with the given text (empty text: Cancel).
class DialogAnswerer : public QObject
{
public:
    explicit DialogAnswerer(QMessageBox::StandardButton button = QMessageBox::Ok, QString inputText = {})
        : m_button(button)
        , m_input(std::move(inputText))
    {
        m_timer.setInterval(10);
        connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
        m_timer.start();
    }

    const SeenDialog &dialog() const { return m_seen; }

private:
    void poll()
    {
        QWidget *w = QApplication::activeModalWidget();
        if (!w)
            return;
        m_timer.stop();
        m_seen.seen = true;
        m_seen.title = w->windowTitle();
        m_seen.size = w->size();
        if (auto *box = qobject_cast<QMessageBox *>(w)) {
            m_seen.text = box->text();
            m_seen.icon = box->icon();
            m_seen.buttons = box->standardButtons();
            m_seen.informative = box->informativeText();
            for (QAbstractButton *b : box->buttons())
                m_seen.buttonTexts.append(b->text());
            box->done(m_button);
        } else if (auto *input = qobject_cast<QInputDialog *>(w)) {
            m_seen.text = input->labelText();
            if (m_input.isEmpty()) {
                input->reject();
            } else {
                input->setTextValue(m_input);
                input->accept();
            }
        } else {
            m_seen.text = QString::fromLatin1(w->metaObject()->className());
            w->close();
        }
    }

    QTimer m_timer;
    QMessageBox::StandardButton m_button;
    QString m_input;
    SeenDialog m_seen;
};

inline QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

inline void writeAll(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write(bytes);
}

/// For looking at what a user sees: when MARVIK_SCREENSHOT_DIR is set, a
/// grab of `widget` is saved there as `<name>.png`. The tests run the same
/// without it.
inline void screenshot(QWidget *widget, const QString &name)
{
    const QString dir = qEnvironmentVariable("MARVIK_SCREENSHOT_DIR");
    if (dir.isEmpty() || !widget)
        return;
    QDir().mkpath(dir);
    // Layout requests are posted: let the window settle as a user would see it.
    QApplication::sendPostedEvents();
    QApplication::processEvents();
    widget->grab().save(dir + u'/' + name + QStringLiteral(".png"));
}

} // namespace marvik::test
