// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QWidget;

namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lists {
class ListStore;
}
namespace marvik::lookup {
class CredentialStore;
class LookUp;
}

namespace marvik::gui {

class AddEditDialog;
class Commands;
class NewVersionDialog;
class Selection;
class SetupDialog;
class StatusLine;

/// The dialogs of the Setup menu and the row menus: the add/edit dialog
/// (`mnuAdd`, `mnuAddNew`, `mnuAddNew2`, `mnuManUpdate`) and the setup
/// dialog (`mnuLatLon`); it writes what the add/edit dialog submits into
/// the lists. It also runs the update check after start-up and asks the
/// new-version question when the maker's page names a newer Marvik.
class DialogsController : public QObject
{
    Q_OBJECT

public:
    DialogsController(lists::ListStore &lists, app::Session &session, Selection &selection, StatusLine &status,
                      const i18n::CurrentTexts &texts, Commands &commands, QNetworkAccessManager &network,
                      QWidget *dialogParent, QObject *parent = nullptr);
    ~DialogsController() override;

    /// The add/edit dialog with `callsign` in its box (empty: a new call).
    void openAddEdit(const QString &callsign);
    /// The setup dialog.
    void openSetup();
    /// Fetches the update page when one is configured; an answer that names
    /// a newer version asks the new-version question. Nothing is said when
    /// the page cannot be had or names no version.
    void checkForUpdates();
    /// Shut-down: every open dialog closes.
    void closeWindows();

    /// The open dialogs; null when closed.
    AddEditDialog *addEditDialog() const;
    SetupDialog *setupDialog() const;
    NewVersionDialog *newVersionDialog() const;
    /// The request control of the update check, once it has started.
    lookup::LookUp *updateLookUp() const { return m_updates; }
    /// The passwords the setup dialog's lookups use; the controller keeps
    /// its own store unless it is given the program's.
    void setCredentials(lookup::CredentialStore *credentials) { m_credentials = credentials; }

private:
    void submitAddEdit();
    void updateFound(const QString &pageText);

    lists::ListStore &m_lists;
    app::Session &m_session;
    Selection &m_selection;
    StatusLine &m_status;
    const i18n::CurrentTexts &m_texts;
    QNetworkAccessManager &m_network;
    QWidget *m_parent;
    lookup::CredentialStore *m_credentials;
    lookup::LookUp *m_updates = nullptr;
    bool m_updateAsked = false;
    QPointer<AddEditDialog> m_addEdit;
    QPointer<SetupDialog> m_setup;
    QPointer<NewVersionDialog> m_newVersion;
};

} // namespace marvik::gui
