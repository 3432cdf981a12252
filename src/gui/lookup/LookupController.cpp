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
#include "gui/app/Commands.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/dialogs/ImageViewer.h"
#include "gui/lookup/LoginWindow.h"

#include <QAction>
#include <QDateTime>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QTimer>

namespace marvik::gui {

using i18n::TextId;
using lists::Column;

namespace {
// No answer within this time ends a lookup with "not found".
constexpr int kLookupTimeoutMs = 12000;
} // namespace

LookupController::LookupController(lists::ListStore &lists, app::Session &session, Selection &selection,
                                   StatusLine &status, const i18n::CurrentTexts &texts, Commands &commands,
                                   QNetworkAccessManager &network, lookup::CookieJar &jar, QWidget *dialogParent,
                                   QObject *parent)
    : QObject(parent)
    , m_lists(lists)
    , m_session(session)
    , m_selection(selection)
    , m_status(status)
    , m_texts(texts)
    , m_commands(commands)
    , m_jar(jar)
    , m_parent(dialogParent)
    , m_sources(session.sources())
{
    setObjectName(QStringLiteral("lookupController"));
    m_lookUp = new lookup::LookUp(&network, m_sources, session.settings().ownCallsign, this);
    m_lookUp->setObjectName(QStringLiteral("ucLookUp"));
    m_dnLoad = new lookup::PictureDownloader(&network, this);
    m_dnLoad->setObjectName(QStringLiteral("ucDnLoad"));
    m_timeout = new QTimer(this);
    m_timeout->setObjectName(QStringLiteral("Timer4"));
    m_timeout->setSingleShot(true);
    m_timeout->setInterval(kLookupTimeoutMs);
    connect(m_timeout, &QTimer::timeout, this, &LookupController::timedOut);

    connect(m_lookUp, &lookup::LookUp::GotSite, this, &LookupController::gotSite);
    connect(m_lookUp, &lookup::LookUp::GotPage, this, [this](const QString &call, bool) { gotPage(call); });
    connect(m_lookUp, &lookup::LookUp::PageNotFound, this, &LookupController::pageNotFound);
    connect(m_lookUp, &lookup::LookUp::CallNotFound, this, &LookupController::callNotFound);
    connect(m_lookUp, &lookup::LookUp::LoginRequired, this, &LookupController::loginRequired);
    connect(m_lookUp, &lookup::LookUp::requestFailed, this, &LookupController::requestFailed);
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
    commands.provide(QStringLiteral("mnuUpdate"), [=] { return hasRow() && online(); });
    commands.provide(QStringLiteral("mnuShowPic"), hasRow);
    commands.provide(QStringLiteral("mnuLogin"), online);
}

LookupController::~LookupController()
{
    // The downloads abort their replies on the way out, so they must go
    // before the network manager that owns those replies.
    delete m_lookUp;
    delete m_dnLoad;
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
    if (!lookup::isOnline(source) || subject != lookup::requestLabel(m_sources, source))
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
    qCDebug(lcLookup) << "looking up" << callSign << "on source" << lookup::dataBaseOf(source);

    m_lookUp->setOwnCallsign(m_session.settings().ownCallsign);
    m_lookUp->setCurrentSource(source);
    m_lookUp->setDataBase(lookup::dataBaseOf(source));
    m_timeout->start();
    m_lookUp->GetPage(callSign + u'2');
}

void LookupController::gotPage(const QString &callSign)
{
    if (callSign != m_call)
        return;
    m_timeout->stop();
    // The readers follow data_base; a log-in check for another source may
    // have changed it while the page was on its way.
    m_lookUp->setDataBase(lookup::dataBaseOf(m_source));
    const lookup::LookupResult result = lookup::readLookupResult(*m_lookUp, callSign);
    switch (result.outcome) {
    case lookup::LookupOutcome::Found:
        writeRow(result);
        break;
    case lookup::LookupOutcome::ReaderError:
        qCWarning(lcLookup) << "the page of" << callSign << "could not be read:" << result.error;
        m_status.alarm(m_texts.fill(TextId::PageUnreadable, callSign, lookup::menuLabel(m_sources, m_source)), true);
        break;
    case lookup::LookupOutcome::CallNotFound:
    case lookup::LookupOutcome::LoginRequired:
    case lookup::LookupOutcome::PageNotFound:
        // The readers have raised CallNotFound or LoginRequired; their
        // handlers have told the user.
        break;
    }
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
    // The user asked for this one: a missing picture is told again.
    m_quietPictures.remove(key);
    startPicture(key, m_typed);
}

void LookupController::startPicture(const QString &callSign, const QString &typed)
{
    const QString address = lookup::pictureAddress(m_sources.picturesHost(), typed.isEmpty() ? callSign : typed);
    emit pictureProgress(0, 0);
    m_dnLoad->DownloadFile(address, lookup::PictureDownloader::kForceUpdate, callSign);
}

void LookupController::fetchPictureQuietly(const QString &callSign)
{
    m_quietPictures.insert(callSign);
    startPicture(callSign, callSign);
}

void LookupController::pageNotFound(const QString &callSign)
{
    if (callSign != m_call)
        return;
    m_timeout->stop();
    m_status.alarm(m_texts.fill(TextId::NotFound, callSign), true);
}

void LookupController::callNotFound(const QString &callSign)
{
    m_timeout->stop();
    m_status.alarm(m_texts.fill(TextId::NotFound, callSign), true);
}

void LookupController::loginRequired(const QString &)
{
    m_timeout->stop();
    m_status.alarm(m_texts[TextId::LoginRequired], true);
}

void LookupController::timedOut()
{
    m_timeout->stop();
    m_status.alarm(m_texts.fill(TextId::NotFound, m_call));
}

void LookupController::requestFailed(const QString &name, const QString &reason)
{
    qCInfo(lcLookup) << "request" << name << "failed:" << reason;
    // Only the page of the lookup in progress ends it early; the user need
    // not wait for the time-out to learn the callbook cannot be reached.
    if (name != m_call + u'2' || !m_timeout->isActive())
        return;
    m_timeout->stop();
    m_status.alarm(m_texts.fill(TextId::NetworkFailure, m_call, reason));
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
    if (!m_quietPictures.remove(name))
        m_status.alarm(m_texts.fill(TextId::NoPicture, name, reason));
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
    const QString site = lookup::siteAddress(m_sources, m_session.currentSource());
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
}

} // namespace marvik::gui
