// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/DialogsController.h"

#include "core/app/Log.h"
#include "core/app/Session.h"
#include "core/dialogs/AddEdit.h"
#include "core/dialogs/NewVersion.h"
#include "core/i18n/Texts.h"
#include "core/lists/ListStore.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/services/CredentialStore.h"
#include "gui/app/Commands.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/dialogs/AddEditDialog.h"
#include "gui/dialogs/Beep.h"
#include "gui/dialogs/NewVersionDialog.h"
#include "gui/dialogs/SetupDialog.h"

#include <QAction>
#include <QDateTime>
#include <QFileInfo>

namespace marvik::gui {

using i18n::TextId;
using lists::Column;

namespace {

/// Modal, gone when closed: the dialogs change the lists and the own
/// station behind the main window, which must not change under them.
void showModal(QDialog *dialog)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace

DialogsController::DialogsController(lists::ListStore &lists, app::Session &session, Selection &selection,
                                     StatusLine &status, const i18n::CurrentTexts &texts, Commands &commands,
                                     QNetworkAccessManager &network, QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_lists(lists)
    , m_session(session)
    , m_selection(selection)
    , m_status(status)
    , m_texts(texts)
    , m_network(network)
    , m_parent(dialogParent)
    , m_credentials(new lookup::CredentialStore(this))
{
    setObjectName(QStringLiteral("dialogsController"));
    const auto openEmpty = [this] { openAddEdit({}); };
    for (const char *name : {"mnuAdd", "mnuAddNew", "mnuAddNew2"}) {
        connect(commands.action(QLatin1String(name)), &QAction::triggered, this, openEmpty);
        commands.provide(QLatin1String(name));
    }
    connect(commands.action(QStringLiteral("mnuManUpdate")), &QAction::triggered, this,
            [this] { openAddEdit(m_selection.callsign()); });
    commands.provide(QStringLiteral("mnuManUpdate"), [this] { return m_selection.currentRow() >= 0; });
    connect(commands.action(QStringLiteral("mnuLatLon")), &QAction::triggered, this, &DialogsController::openSetup);
    commands.provide(QStringLiteral("mnuLatLon"));
}

DialogsController::~DialogsController()
{
    // The dialogs belong to the main window, but they use this controller's
    // password store and the network: they go now.
    delete m_addEdit;
    delete m_setup;
    delete m_newVersion;
    delete m_updates;
}

AddEditDialog *DialogsController::addEditDialog() const
{
    return m_addEdit;
}

SetupDialog *DialogsController::setupDialog() const
{
    return m_setup;
}

NewVersionDialog *DialogsController::newVersionDialog() const
{
    return m_newVersion;
}

void DialogsController::openAddEdit(const QString &callsign)
{
    if (m_addEdit) {
        m_addEdit->raise();
        return;
    }
    m_addEdit = new AddEditDialog(m_lists, m_session, m_texts, m_parent);
    m_addEdit->setCallsign(callsign);
    connect(m_addEdit, &AddEditDialog::submitted, this, &DialogsController::submitAddEdit);
    showModal(m_addEdit);
}

void DialogsController::openSetup()
{
    if (m_setup) {
        m_setup->raise();
        return;
    }
    m_setup = new SetupDialog(m_session, m_texts, m_network, m_credentials, m_parent);
    showModal(m_setup);
}

void DialogsController::submitAddEdit()
{
    if (!m_addEdit)
        return;
    const dialogs::EditedFields fields = m_addEdit->fields();
    if (fields.callsign.isEmpty())
        return;
    const maps::Position me = m_session.me();
    // Looked for again: a lookup may have put the call into a list since
    // the dialog last looked, and it must not go in twice.
    const dialogs::Membership where = dialogs::findInLists(m_lists, fields.callsign);
    if (!where.found()) {
        // Into the list shown at the moment of the click.
        const int list = m_selection.currentList();
        lists::CallListModel *model = m_lists.model(list);
        lists::CallRecord row;
        dialogs::writeFields(row, fields, me);
        row[Column::TimeStamp] = lists::timeStamp(QDateTime::currentDateTime());
        const QString thumb = m_session.dataFolder().thumbnailPath(fields.callsign);
        if (QFileInfo::exists(thumb))
            row.thumbnail = thumb;
        model->appendRecord(row);
        m_lists.changed(list);
        m_selection.reveal(list, model->findCallsign(fields.callsign));
    } else {
        for (int list : where.lists()) {
            lists::CallListModel *model = m_lists.model(list);
            for (int r = 0; r < model->rowCount(); ++r) {
                if (model->record(r)[Column::Callsign] != fields.callsign)
                    continue;
                lists::CallRecord row = model->record(r);
                dialogs::writeFields(row, fields, me);
                model->replaceRecord(r, row);
            }
            m_lists.changed(list);
        }
    }
    m_status.alarm(m_texts.fill(TextId::Updated, fields.callsign));
    sound::beep();
    // The call now stands in a list: the dialog says where, and a second
    // click saves changes instead of adding it again.
    m_addEdit->refresh();
}

void DialogsController::checkForUpdates()
{
    const lookup::SourceSettings &sources = m_session.sources();
    if (sources.updatesUrl().isEmpty() || m_updates)
        return;
    m_updates = new lookup::LookUp(&m_network, sources, QString(), this);
    m_updates->setObjectName(QStringLiteral("updateCheck"));
    connect(m_updates, &lookup::LookUp::UpdateFound, this, &DialogsController::updateFound);
    connect(m_updates, &lookup::LookUp::requestFailed, this, [](const QString &, const QString &why) {
        qCDebug(lcDialogs) << "no update page:" << why;
    });
    m_updates->CheckUpdates();
}

void DialogsController::updateFound(const QString &pageText)
{
    const std::optional<QVersionNumber> newer = dialogs::newerVersion(pageText);
    if (!newer) {
        qCDebug(lcDialogs) << "the update page names no newer version";
        return;
    }
    if (m_updateAsked)
        return;
    m_updateAsked = true;
    const lookup::SourceSettings &sources = m_session.sources();
    // Without a download page of its own, Yes opens the page that told.
    const QString download = sources.downloadUrl().isEmpty() ? sources.updatesUrl() : sources.downloadUrl();
    m_newVersion = new NewVersionDialog(newer->toString(), download, m_texts, m_parent);
    showModal(m_newVersion);
}

void DialogsController::closeWindows()
{
    for (QDialog *dialog : std::initializer_list<QDialog *>{m_addEdit, m_setup, m_newVersion}) {
        if (dialog)
            dialog->close();
    }
}

} // namespace marvik::gui
