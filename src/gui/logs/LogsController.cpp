// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/logs/LogsController.h"

#include "core/app/Callsign.h"
#include "core/app/Log.h"
#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/ListEditing.h"
#include "core/lists/ListStore.h"
#include "core/logs/AdifExport.h"
#include "core/logs/AdifImport.h"
#include "core/logs/AdifReader.h"
#include "core/logs/PageRefreshLookup.h"
#include "core/logs/RefreshSettings.h"
#include "core/lookup/SourceSettings.h"
#include "gui/app/Commands.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/logs/ExportDialog.h"
#include "gui/logs/LogTexts.h"
#include "gui/logs/RefreshProgress.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSettings>

#include <memory>

namespace marvik::gui {

using i18n::TextId;

namespace {

// Where the export dialog's choices and the last folder are kept.
const QString kGroup = QStringLiteral("Adif");

QString defaultChooser(QWidget *parent, const LogsController::FileQuestion &q)
{
    if (q.kind == LogsController::FileQuestion::Kind::Open)
        return QFileDialog::getOpenFileName(parent, q.title, q.suggested, q.filters);
    return QFileDialog::getSaveFileName(parent, q.title, q.suggested, q.filters);
}

} // namespace

LogsController::LogsController(lists::ListStore &lists, app::Session &session, Selection &selection,
                               StatusLine &status, const i18n::CurrentTexts &texts, Commands &commands,
                               QNetworkAccessManager &network, QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_lists(lists)
    , m_session(session)
    , m_selection(selection)
    , m_status(status)
    , m_texts(texts)
    , m_commands(commands)
    , m_network(network)
    , m_parent(dialogParent)
    , m_chooseFile([this](const FileQuestion &q) { return defaultChooser(m_parent, q); })
    , m_progress(new RefreshProgress(dialogParent))
{
    setObjectName(QStringLiteral("logsController"));
    m_progress->hide();
    status.addFootWidget(m_progress);
    connect(m_progress, &RefreshProgress::cancelClicked, this, &LogsController::cancelUpdate);

    const auto hasRows = [this] { return m_lists.rowCount(m_selection.currentList()) > 0; };
    connect(commands.action(QStringLiteral("mnuImportAdif")), &QAction::triggered, this, &LogsController::importAdif);
    connect(commands.action(QStringLiteral("mnuExportAdif")), &QAction::triggered, this, &LogsController::exportAdif);
    connect(commands.action(QStringLiteral("mnuUpdateAll")), &QAction::triggered, this, &LogsController::updateAll);
    commands.provide(QStringLiteral("mnuImportAdif"));
    commands.provide(QStringLiteral("mnuExportAdif"), hasRows);
    // One update at a time: it paces its requests to the callbooks, and two
    // would ask twice as fast.
    commands.provide(QStringLiteral("mnuUpdateAll"), [=, this] {
        return hasRows() && lookup::isOnline(m_session.currentSource()) && !(m_refresh && m_refresh->isRunning());
    });
    connect(&texts, &i18n::CurrentTexts::changed, this, &LogsController::relabel);
    relabel();
}

// Quitting during an update leaves its state file: the next one goes on.
LogsController::~LogsController() = default;

void LogsController::relabel()
{
    if (m_progress)
        m_progress->setCancelText(m_texts[TextId::ButtonCancel]);
}

QString LogsController::listName(int list) const
{
    return lists::nameBeforeParen(m_lists.chooserLine(list)).trimmed();
}

QString LogsController::folder() const
{
    const QString kept = m_session.store().value(kGroup + QStringLiteral("/Folder")).toString();
    return !kept.isEmpty() && QFileInfo(kept).isDir() ? kept : QDir::homePath();
}

void LogsController::keepFolder(const QString &file)
{
    m_session.store().setValue(kGroup + QStringLiteral("/Folder"), QFileInfo(file).absolutePath());
}

// ---------------------------------------------------------------- import

void LogsController::importAdif()
{
    const int list = m_selection.currentList();
    FileQuestion q;
    q.kind = FileQuestion::Kind::Open;
    q.title = m_texts[TextId::ImportTitle];
    q.suggested = folder();
    q.filters = m_texts[TextId::AdifLogs] + QStringLiteral(" (*.adi *.adif *.adx);;") + m_texts[TextId::AllFiles]
                + QStringLiteral(" (*)");
    const QString path = m_chooseFile(q);
    if (path.isEmpty())
        return;
    keepFolder(path);

    const QString shown = QDir::toNativeSeparators(path);
    logs::AdifLog log;
    QString why;
    if (!logs::readAdifFile(path, log, &why)) {
        messages::exclamation(m_parent, m_texts.fill(TextId::ImportUnreadable, shown, why));
        return;
    }
    if (log.isEmpty()) {
        QString text = m_texts.fill(TextId::ImportNoAdif, shown);
        if (!log.problems.isEmpty())
            text += u'\n' + problemLine(log.problems.first(), m_texts.texts());
        messages::exclamation(m_parent, text);
        return;
    }
    const logs::ImportContext context{m_session.me(), m_session.dataFolder().thumbsDir(), {}};
    const logs::ImportSummary summary = logs::importLog(log, *m_lists.model(list), context);
    qCInfo(lcLogs) << "imported" << path << "into list" << list << ":" << logs::summaryText(summary);
    // Sorted and saved once, however many rows came in.
    if (summary.changed())
        m_lists.changed(list);
    messages::information(m_parent,
                          importSummaryText(summary, m_texts.texts(), QFileInfo(path).fileName(), listName(list)));
}

// ---------------------------------------------------------------- export

void LogsController::exportAdif()
{
    const int list = m_selection.currentList();
    const lists::CallListModel *model = m_lists.model(list);
    QSettings &store = m_session.store();
    ExportChoices initial;
    initial.format = store.value(kGroup + QStringLiteral("/Format")).toString() == u"adx" ? logs::AdifFormat::Adx
                                                                                          : logs::AdifFormat::Adi;
    initial.band = store.value(kGroup + QStringLiteral("/Band")).toString();
    initial.mode = store.value(kGroup + QStringLiteral("/Mode"), initial.mode).toString();
    // The list's name makes the file's, kept clear of separators.
    initial.file = QDir(folder()).filePath(callsign::fileName(listName(list))
                                           + (initial.format == logs::AdifFormat::Adx ? QStringLiteral(".adx")
                                                                                      : QStringLiteral(".adi")));
    const QString filters = m_texts[TextId::AdiFiles] + QStringLiteral(" (*.adi *.adif);;") + m_texts[TextId::AdxFiles]
                            + QStringLiteral(" (*.adx);;") + m_texts[TextId::AllFiles] + QStringLiteral(" (*)");
    const auto browse = [this, filters](const QString &suggested) {
        FileQuestion q;
        q.kind = FileQuestion::Kind::Save;
        q.title = m_texts[TextId::ExportSaveTitle];
        q.suggested = suggested;
        q.filters = filters;
        return m_chooseFile(q);
    };
    ExportDialog dialog(m_texts, m_texts.fill(TextId::ExportList, listName(list), QString::number(model->rowCount())),
                        initial, browse, m_parent);
    if (dialog.exec() != QDialog::Accepted)
        return;

    const ExportChoices chosen = dialog.choices();
    // A bare name goes where the last log went, not where Marvik was started.
    const QString path = QDir(folder()).absoluteFilePath(chosen.file);
    logs::ExportOptions options;
    options.format = chosen.format;
    options.band = chosen.band;
    options.mode = chosen.mode;
    QString why;
    const int written = logs::exportAdifFile(*m_lists.model(list), path, options, &why);
    if (written < 0) {
        messages::exclamation(m_parent, m_texts.fill(TextId::FileWriteFailed, QDir::toNativeSeparators(path), why));
        return;
    }
    keepFolder(path);
    store.setValue(kGroup + QStringLiteral("/Format"),
                   chosen.format == logs::AdifFormat::Adx ? QStringLiteral("adx") : QStringLiteral("adi"));
    store.setValue(kGroup + QStringLiteral("/Band"), chosen.band);
    store.setValue(kGroup + QStringLiteral("/Mode"), chosen.mode);
    m_status.note(m_texts.fill(TextId::ExportDone, QString::number(written), QDir::toNativeSeparators(path)));
}

// ---------------------------------------------------------------- updating a whole list

bool LogsController::isRefreshing(int list) const
{
    return m_refresh && m_refresh->isRunning() && m_refreshList == list;
}

// The one seam between a whole-list update and the callbooks: today the
// chosen source's pages, through a lookup control of the update's own, so
// a single lookup and its Cancel go on beside it. Whatever takes its place
// reports to the same four slots of the refresh.
logs::ListRefresh::StartLookup LogsController::attachLookup(logs::ListRefresh &refresh, lookup::Source source)
{
    auto *pages = new logs::PageRefreshLookup(&m_network, m_session.sources(), m_session.settings().ownCallsign,
                                              source, &refresh);
    pages->connectTo(&refresh);
    return [pages](const QString &call) { pages->start(call); };
}

void LogsController::updateAll()
{
    if (m_refresh && m_refresh->isRunning())
        return;
    const int list = m_selection.currentList();
    const lookup::Source source = m_session.currentSource();
    if (!lookup::isOnline(source)) {
        m_status.alarm(m_texts[TextId::NoOnlineSource]);
        return;
    }
    if (m_refresh)
        m_refresh->deleteLater();
    // Each row is written, sorted and saved the way every other change of
    // a list is; a file that cannot be written has been told about by then.
    const auto commit = [this, list](QString *why) {
        if (m_lists.changed(list))
            return true;
        if (why)
            *why = QDir::toNativeSeparators(m_session.dataFolder().listFile(list));
        return false;
    };
    auto start = std::make_shared<logs::ListRefresh::StartLookup>();
    m_refresh = new logs::ListRefresh(m_lists.model(list), m_session.dataFolder().listFile(list),
                                      [start](const QString &call) { (*start)(call); }, commit, this);
    m_refresh->setObjectName(QStringLiteral("listRefresh"));
    *start = attachLookup(*m_refresh, source);
    m_refreshList = list;
    m_refreshSource = lookup::menuLabel(m_session.sources(), source);

    const logs::RefreshSettings settings = logs::RefreshSettings::load(m_session.store());
    m_skipDays = settings.skipDays;
    m_refresh->setIntervalMs(settings.intervalMs);
    m_refresh->setSkipDays(settings.skipDays);
    m_refresh->setOwnPosition(m_session.me());
    m_refresh->setSortMode(m_session.settings().sortMode);
    m_refresh->setSourceName(m_refreshSource);
    connect(m_refresh, &logs::ListRefresh::progress, this, &LogsController::showProgress);
    connect(m_refresh, &logs::ListRefresh::rowWritten, this,
            [this](const QString &call) { emit pictureWanted(call); });
    connect(m_refresh, &logs::ListRefresh::finished, this, &LogsController::updateEnded);

    if (m_refresh->hasUnfinished()) {
        const QString after = m_refresh->resumesAfter();
        // Yes goes on where the last update stopped; No starts again.
        if (!after.isEmpty() && !messages::question(m_parent, m_texts.fill(TextId::RefreshResume, listName(list), after), true))
            m_refresh->discardUnfinished();
    }
    if (!m_refresh->start())
        return;
    m_progress->setToolTip(m_texts.fill(TextId::RefreshTooltip, listName(list), m_refreshSource));
    m_progress->setProgress(0, 1, QString());
    m_progress->show();
    m_commands.refresh();
}

void LogsController::cancelUpdate()
{
    if (m_refresh)
        m_refresh->cancel();
}

void LogsController::showProgress(int n, int m, const QString &call, qint64 msecsLeft)
{
    m_progress->setProgress(n, m,
                            m_texts.fill(TextId::RefreshProgress, QString::number(n), QString::number(m))
                                + QStringLiteral(": ") + m_texts.fill(TextId::RefreshCallLeft, call, durationText(msecsLeft)));
}

void LogsController::updateEnded(const logs::RefreshSummary &summary)
{
    m_progress->hide();
    m_commands.refresh();
    const QString text = refreshSummaryText(summary, m_texts.texts(), listName(m_refreshList), m_refreshSource, m_skipDays);
    qCInfo(lcLogs) << "update of list" << m_refreshList << "ended:" << logs::summaryText(summary);
    switch (summary.end) {
    case logs::RefreshEnd::Cancelled:
        // The user stopped it and knows; the foot says where it will go on.
        m_status.note(text.section(u'\n', 0, 0));
        break;
    case logs::RefreshEnd::Completed: messages::information(m_parent, text); break;
    case logs::RefreshEnd::QuotaUsedUp:
    case logs::RefreshEnd::Failing:
    case logs::RefreshEnd::WriteFailed: messages::exclamation(m_parent, text); break;
    }
}

} // namespace marvik::gui
