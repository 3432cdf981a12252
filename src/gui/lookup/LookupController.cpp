// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lookup/LookupController.h"

#include "core/app/Callsign.h"
#include "core/app/Log.h"
#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/ListStore.h"
#include "core/lookup/CookieJar.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/LookupResult.h"
#include "core/lookup/PictureDownloader.h"
#include "core/lookup/PictureFiles.h"
#include "core/lookup/services/CallbookLookup.h"
#include "core/lookup/services/CredentialStore.h"
#include "core/lookup/services/LookupCache.h"
#include "gui/app/Commands.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/dialogs/ImageViewer.h"
#include "gui/lookup/AccountsDialog.h"
#include "gui/lookup/LoginWindow.h"

#include <QAction>
#include <QDateTime>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QTimer>

#include <algorithm>

namespace marvik::gui {

using i18n::TextId;
using lists::Column;
using lookup::FailReason;

namespace {
// One source that gives no answer within this time counts as not knowing
// the call; the next source of the fallback order is asked.
constexpr int kSourceTimeoutMs = 12000;
// The whole lookup, every source together: after this the user hears the
// outcome, answered from the cache if it knows the call.
constexpr int kLookupDeadlineMs = 30000;
} // namespace

LookupController::LookupController(lists::ListStore &lists, app::Session &session, Selection &selection,
                                   StatusLine &status, const i18n::CurrentTexts &texts, Commands &commands,
                                   QNetworkAccessManager &network, lookup::CookieJar &jar,
                                   lookup::CallbookLookup &callbooks, lookup::CredentialStore &credentials,
                                   QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_lists(lists)
    , m_session(session)
    , m_selection(selection)
    , m_status(status)
    , m_texts(texts)
    , m_commands(commands)
    , m_network(network)
    , m_jar(jar)
    , m_callbooks(callbooks)
    , m_credentials(credentials)
    , m_parent(dialogParent)
{
    setObjectName(QStringLiteral("lookupController"));
    // The callbook lookup's page control is the one the log-in state is asked
    // with too, under the name users and tests know.
    m_lookUp = m_callbooks.pageLookUp();
    m_lookUp->setObjectName(QStringLiteral("ucLookUp"));
    m_dnLoad = new lookup::PictureDownloader(&network, this);
    m_dnLoad->setObjectName(QStringLiteral("ucDnLoad"));
    // The lookup's time-out keeps the name it always had: it is the deadline
    // of the whole lookup now, each source having its own shorter one.
    m_callbooks.deadlineTimer()->setObjectName(QStringLiteral("Timer4"));
    m_callbooks.setSourceTimeout(kSourceTimeoutMs);
    m_callbooks.setDeadline(kLookupDeadlineMs);
    applySources();
    connect(&m_session, &app::Session::sourcesChanged, this, &LookupController::applySources);

    connect(m_lookUp, &lookup::LookUp::GotSite, this, &LookupController::gotSite);
    connect(&m_callbooks, &lookup::CallbookLookup::trying, this,
            [this](const QString &call, lookup::Source source) { trying(call, source); });
    connect(&m_callbooks, &lookup::CallbookLookup::answered, this, &LookupController::answered);
    connect(&m_callbooks, &lookup::CallbookLookup::failed, this, &LookupController::failed);
    connect(m_dnLoad, &lookup::PictureDownloader::Progress, this,
            [this](qint64 done, qint64 total, const QString &) { emit pictureProgress(done, total); });
    connect(m_dnLoad, &lookup::PictureDownloader::DownloadComplete, this, &LookupController::pictureDownloaded);
    connect(m_dnLoad, &lookup::PictureDownloader::downloadFailed, this, &LookupController::pictureFailed);

    const auto online = [this] { return lookup::isOnline(m_session.currentSource()); };
    const auto hasRow = [this] { return m_selection.currentRow() >= 0; };
    connect(commands.action(QStringLiteral("mnuUpdate")), &QAction::triggered, this, &LookupController::update);
    connect(commands.action(QStringLiteral("mnuShowPic")), &QAction::triggered, this,
            [this] { showPicture(m_selection.currentRow(), false); });
    connect(commands.action(QStringLiteral("mnuLogin")), &QAction::triggered, this, &LookupController::openLogin);
    connect(commands.action(QStringLiteral("mnuAccounts")), &QAction::triggered, this,
            &LookupController::openAccounts);
    connect(commands.action(QStringLiteral("mnuClearCache")), &QAction::triggered, this,
            &LookupController::clearCache);
    commands.provide(QStringLiteral("mnuUpdate"), [=] { return hasRow() && online(); });
    // A call without a picture file has nothing to show; the viewer would
    // only blame a corrupt image.
    commands.provide(QStringLiteral("mnuShowPic"), [this] { return hasPictureFile(); });
    commands.provide(QStringLiteral("mnuLogin"), online);
    commands.provide(QStringLiteral("mnuAccounts"));
    commands.provide(QStringLiteral("mnuClearCache"), [this] {
        return m_callbooks.mayCache();
    });
}

LookupController::~LookupController()
{
    // The downloads abort their replies on the way out, so they must go
    // before the network manager that owns those replies.
    delete m_dnLoad;
}

void LookupController::applySources()
{
    const lookup::SourceSettings &sources = m_session.sources();
    m_callbooks.setSettings(sources);
    // A cache still to open takes the settings when it opens.
    if (lookup::LookupCache *cache = m_callbooks.openedCache()) {
        cache->setFreshDays(sources.cacheFreshDays());
        cache->setMaxEntries(sources.cacheMaxEntries());
    }
}

bool LookupController::hasPictureFile() const
{
    const QString call = m_selection.callsign();
    return m_selection.currentRow() >= 0 && !call.isEmpty()
           && QFileInfo(m_session.dataFolder().picturePath(call)).isFile();
}

ImageViewer *LookupController::viewer() const
{
    return m_viewer;
}

LoginWindow *LookupController::loginWindow() const
{
    return m_login;
}

void LookupController::sourceChanged(const QString &label)
{
    m_sourceLabel = label;
    m_commands.action(QStringLiteral("mnuLogin"))->setText(Commands::menuText(m_texts.fillSource(TextId::MenuLogin, label)));
    emit databaseCaptionChanged(label);
    checkLogin();
}

void LookupController::checkLogin()
{
    const lookup::Source source = m_session.currentSource();
    if (!lookup::isOnline(source))
        return;
    m_lookUp->setOwnCallsign(m_session.settings().ownCallsign);
    m_lookUp->setCurrentSource(source);
    m_lookUp->setDataBase(lookup::dataBaseOf(source));
    m_lookUp->GetSite();
}

void LookupController::gotSite(const QString &subject, bool loggedIn)
{
    // A late answer from the source chosen before must not label this one.
    const lookup::Source source = m_session.currentSource();
    if (!lookup::isOnline(source) || subject != lookup::requestLabel(m_session.sources(), source))
        return;
    // Callook needs no log-in, so its site never says whether one is made.
    const TextId suffix = source == lookup::Source::Callook ? TextId::LoginNotNeeded
                          : loggedIn                        ? TextId::LoggedIn
                                                            : TextId::LoginNeeded;
    emit databaseCaptionChanged(m_sourceLabel + m_texts.padded(suffix));
}

void LookupController::get(const QString &typed)
{
    const QString call = callsign::forLookup(typed);
    if (call.isEmpty())
        return;
    const int list = m_selection.currentList();
    const int row = m_lists.model(list)->findCallsign(call);
    if (row >= 0) {
        m_selection.reveal(list, row, true);
        return;
    }
    // The picture host files a picture under the call's last character as
    // typed, slashed zero and all.
    const QString asTyped = callsign::asTyped(typed);
    startLookup(call, callsign::forLookup(asTyped) == call ? asTyped : call, {});
}

void LookupController::update()
{
    const std::optional<lists::CallRecord> record = m_selection.record();
    if (!record)
        return;
    const QString rowCall = (*record)[Column::Callsign];
    const QString call = callsign::forLookup(rowCall);
    if (call.isEmpty())
        return;
    startLookup(call, rowCall, rowCall);
}

void LookupController::startLookup(const QString &callSign, const QString &typed, const QString &rowCallsign)
{
    const lookup::Source source = m_session.currentSource();
    if (!lookup::isOnline(source)) {
        m_status.alarm(m_texts[TextId::NoOnlineSource]);
        return;
    }
    m_call = callSign;
    m_typed = typed;
    m_rowCallsign = rowCallsign;
    m_list = m_selection.currentList();
    m_source = source;
    qCDebug(lcLookup) << "looking up" << callSign << "from source" << lookup::dataBaseOf(source);
    m_callbooks.setOwnCallsign(m_session.settings().ownCallsign);
    m_callbooks.lookUp(callSign, source);
}

void LookupController::trying(const QString &callSign, lookup::Source source)
{
    if (callSign == m_call)
        m_status.busy(m_texts.fill(TextId::LookingUp, callSign, lookup::menuLabel(m_session.sources(), source)));
}

void LookupController::cancel()
{
    if (!m_callbooks.isBusy())
        return;
    m_callbooks.cancel();
    m_status.idle();
    m_status.note(m_texts.fill(TextId::LookupCancelled, m_call));
    m_call.clear();
}

void LookupController::answered(const lookup::CallbookAnswer &answer)
{
    if (answer.callsign != m_call)
        return;
    m_status.idle();
    // The user hears where the row came from whenever it was not the source
    // they chose, so a fallback never passes for the chosen callbook.
    m_answerNote.clear();
    if (answer.cached)
        m_answerNote = m_texts.fill(TextId::AnsweredCached, answer.callsign,
                                    answer.cachedAt.toLocalTime().date().toString(Qt::ISODate));
    else if (answer.source != m_source)
        m_answerNote = m_texts.fill(TextId::AnsweredBy, answer.callsign, lookup::sourceInfo(answer.source).key.toString());
    if (!m_answerNote.isEmpty())
        m_status.note(m_answerNote);
    const QString key = m_rowCallsign.isEmpty() ? m_call : m_rowCallsign;
    writeRow(answer.result);
    // The picture host files pictures under the call as typed; a service
    // that names a picture of its own is asked for that one.
    const lookup::SourceSettings &sources = m_session.sources();
    const QString hostAddress = lookup::pictureAddress(sources.picturesHost(), m_call);
    QString address = answer.result.pictureUrl;
    if (address.isEmpty() || address == hostAddress)
        address = lookup::pictureAddress(sources.picturesHost(), m_typed.isEmpty() ? key : m_typed);
    // Offline, the picture of a cached answer is most likely on disk already.
    if (answer.cached && QFileInfo(m_session.dataFolder().picturePath(key)).isFile())
        return;
    startPicture(key, address);
}

void LookupController::failed(const QString &callSign, const QList<lookup::SourceFailure> &failures)
{
    if (callSign != m_call)
        return;
    m_status.idle();
    using F = lookup::SourceFailure;
    const auto first = [&failures](auto test) -> const F * {
        const auto it = std::find_if(failures.begin(), failures.end(), test);
        return it == failures.end() ? nullptr : &*it;
    };
    const auto label = [this](const F *f) { return lookup::menuLabel(m_session.sources(), f->source); };
    for (const F &f : failures)
        qCInfo(lcLookup) << callSign << lookup::sourceName(f.source) << lookup::failReasonText(f.reason) << f.detail;
    // A source that answered beats one that could not: "not found" from any
    // source is the outcome, then a page that wants a log-in, a page we could
    // not read, an account or a quota; only when no source said anything is
    // it the network. A lookup that merely ran out of time is "not found", as
    // it always was.
    const auto page = [](const F &x) { return x.via == lookup::Via::Page; };
    const F *notFound = first([](const F &x) { return x.reason == FailReason::NotFound; });
    const F *pageLogin = first([&](const F &x) { return x.reason == FailReason::LoginRequired && page(x); });
    const F *unreadable = first([&](const F &x) { return x.reason == FailReason::Unreadable && page(x); });
    const F *account = first([](const F &x) {
        return x.reason == FailReason::NoAccount || x.reason == FailReason::LoginRequired;
    });
    const F *quota = first([](const F &x) { return x.reason == FailReason::QuotaUsedUp; });
    const F *notTimeOut = first([](const F &x) { return x.reason != FailReason::TimedOut; });
    if (notFound)
        m_status.alarm(m_texts.fill(TextId::NotFound, callSign), true);
    else if (pageLogin)
        m_status.alarm(m_texts[TextId::LoginRequired], true);
    else if (unreadable)
        m_status.alarm(m_texts.fill(TextId::PageUnreadable, callSign, label(unreadable)), true);
    else if (account)
        m_status.alarm(m_texts.fill(TextId::AccountNeeded, callSign, label(account)));
    else if (quota)
        m_status.alarm(m_texts.fill(TextId::QuotaUsedUp, callSign, label(quota)));
    else if (!notTimeOut)
        m_status.alarm(m_texts.fill(TextId::NotFound, callSign));
    else
        m_status.alarm(m_texts.fill(TextId::NetworkFailure, callSign, lookup::menuLabel(m_session.sources(), m_source)));
    m_call.clear();
}

void LookupController::writeRow(const lookup::LookupResult &result)
{
    lists::CallListModel *model = m_lists.model(m_list);
    const QString key = m_rowCallsign.isEmpty() ? m_call : m_rowCallsign;
    const int row = model->findCallsign(key);
    const bool existing = row >= 0;
    lists::CallRecord record = existing ? model->record(row) : lists::CallRecord();
    // An updated row keeps its callsign as the list has it, so its thumbnail
    // and its place in other lists still match.
    lookup::writeLookupResult(record, existing, key, result, m_session.me(), QDateTime::currentDateTime());
    if (existing) {
        model->replaceRecord(row, record);
    } else {
        const QString thumb = m_session.dataFolder().thumbnailPath(key);
        if (QFileInfo::exists(thumb))
            record.thumbnail = thumb;
        model->appendRecord(record);
    }
    m_lists.changed(m_list);
    if (m_list == m_selection.currentList())
        m_selection.reveal(m_list, model->findCallsign(key));
    m_commands.refresh();
    // The user asked for this one: a missing picture is told again.
    m_quietPictures.remove(key);
}

void LookupController::startPicture(const QString &callSign, const QString &address)
{
    emit pictureProgress(0, 0);
    m_dnLoad->DownloadFile(address, lookup::PictureDownloader::kForceUpdate, callSign);
}

void LookupController::fetchPictureQuietly(const QString &callSign)
{
    m_quietPictures.insert(callSign);
    startPicture(callSign, lookup::pictureAddress(m_session.sources().picturesHost(), callSign));
}

void LookupController::pictureDownloadsEnded(const QString &name)
{
    // The finished download is still listed while its event runs.
    QStringList pending = m_dnLoad->pendingDownloads();
    pending.removeOne(name);
    if (pending.isEmpty())
        emit pictureProgressDone();
}

void LookupController::pictureDownloaded(const QString &name)
{
    pictureDownloadsEnded(name);
    const lookup::StoredPicture stored = lookup::storePicture(m_session.dataFolder(), name, m_dnLoad->bytes());
    m_commands.refresh();
    if (stored.status != lookup::PictureStatus::Saved) {
        pictureFailed(name, stored.error);
        return;
    }
    m_quietPictures.remove(name);
    // Every list that holds the call shows the new thumbnail at once.
    for (int n = 1; n <= lists::kListCount; ++n) {
        lists::CallListModel *model = m_lists.model(n);
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->record(row)[Column::Callsign] == name)
                model->setThumbnail(row, stored.thumbnailPath);
        }
    }
}

void LookupController::pictureFailed(const QString &name, const QString &reason)
{
    pictureDownloadsEnded(name);
    qCInfo(lcLookup) << "no picture of" << name << reason;
    // A whole-list update fetches many pictures: those say nothing.
    if (m_quietPictures.remove(name))
        return;
    // Most operators have no picture on file: a quiet note, never an alarm
    // that hides the list chooser after a good lookup.
    QString text = m_texts.fill(TextId::NoPicture, name, reason);
    if (!m_answerNote.isEmpty() && m_status.noteText() == m_answerNote)
        text = m_answerNote + QStringLiteral(" \u00b7 ") + text;
    m_status.note(text);
}

void LookupController::showThumbnailPicture(int row)
{
    showPicture(row, true);
}

void LookupController::showPicture(int row, bool fromThumbnail)
{
    const lists::CallListModel *model = m_lists.model(m_selection.currentList());
    if (row < 0 || row >= model->rowCount())
        return;
    const QString path = m_session.dataFolder().picturePath(model->record(row)[Column::Callsign]);
    if (m_viewer)
        m_viewer->close();
    auto *viewer = new ImageViewer(m_parent);
    if (!viewer->load(path)) {
        delete viewer;
        messages::exclamation(m_parent, m_texts[TextId::CorruptImage1] + i18n::kMessageJoint
                                            + m_texts[TextId::CorruptImage2]);
        return;
    }
    m_viewer = viewer;
    if (fromThumbnail)
        viewer->moveCursorInside();
    viewer->show();
    viewer->raise();
    viewer->activateWindow();
}

void LookupController::openLogin()
{
    const QString site = lookup::siteAddress(m_session.sources(), m_session.currentSource());
    if (site.isEmpty())
        return;
    if (m_login)
        m_login->close();
    auto *login = new LoginWindow(QUrl(site), &m_jar, m_parent);
    connect(login, &LoginWindow::closed, this, &LookupController::checkLogin);
    m_login = login;
    login->show();
}

void LookupController::closeWindows()
{
    if (m_login)
        m_login->close();
    if (m_viewer)
        m_viewer->close();
    if (m_accounts)
        m_accounts->reject();
}

AccountsDialog *LookupController::accountsDialog() const
{
    return m_accounts;
}

void LookupController::openAccounts()
{
    if (m_accounts) {
        m_accounts->raise();
        m_accounts->activateWindow();
        return;
    }
    auto *dialog = new AccountsDialog(m_texts, m_session.sources(), m_credentials, m_network, m_callbooks.cache(),
                                      m_parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] { m_session.setSources(dialog->settings()); });
    connect(dialog, &AccountsDialog::cacheCleared, this,
            [this](int removed) { m_status.note(m_texts.fill(TextId::CacheCleared, QString::number(removed))); });
    m_accounts = dialog;
    dialog->open();
}

void LookupController::clearCache()
{
    lookup::LookupCache *cache = m_callbooks.cache();
    if (!cache || !cache->isOpen())
        return;
    const int removed = cache->count();
    cache->clear();
    m_status.note(m_texts.fill(TextId::CacheCleared, QString::number(removed)));
}

} // namespace marvik::gui
