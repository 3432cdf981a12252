// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/Sources.h"

#include <QObject>
#include <QUrl>
#include <QPointer>
#include <QWidget>

#include <functional>


namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}

class QPlainTextEdit;

namespace marvik::gui {

class Commands;

/// The main window's own commands: the source menus (the current source and
/// the default), always on top, help and about.
class AppController : public QObject
{
    Q_OBJECT

public:
    AppController(app::Session &session, i18n::CurrentTexts &texts, Commands &commands, QWidget *dialogParent,
                  QObject *parent = nullptr);
    ~AppController() override;

    /// Start-up step 11: checks the default source in both menus and makes
    /// it the current one.
    void applyDefaultSource();
    /// Start-up step 12 and the language menu: loads the language file of
    /// the configured language over the current texts, checks its menu
    /// item, and tells the user when the file cannot be used.
    void loadLanguage();
    /// Opens a file in the desktop's viewer (tests stand in for the desktop).
    using OpenFile = std::function<bool(const QUrl &)>;
    void setFileOpener(OpenFile open) { m_openFile = std::move(open); }
    /// The label the Database menu shows for the current source.
    QString sourceLabel() const;

signals:
    void alwaysOnTopChanged(bool onTop);
    /// The current source changed; its label is the Database menu's caption
    /// until the log-in check adds a suffix.
    void sourceLabelChanged(const QString &label);

private:
    void chooseSource(lookup::Source source);
    void chooseDefault(lookup::Source source);
    void checkSourceMenus();
    void chooseLanguage(int language);
    void toggleOnTop();
    void showHelp();
    void showAbout();

    app::Session &m_session;
    i18n::CurrentTexts &m_texts;
    Commands &m_commands;
    QPointer<QPlainTextEdit> m_help;
    OpenFile m_openFile;
    QPointer<QWidget> m_parent;
};

} // namespace marvik::gui
