// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lookup/LookupController.h"

#include "gui/lookup/LoginWindow.h"
#include "gui/app/MainWindow.h"
#include "gui/dialogs/ImageViewer.h"
#include "gui/lists/ListGrid.h"

#include "core/app/Callsign.h"
#include "core/app/Log.h"
#include "core/lists/CallListModel.h"
#include "core/lookup/CookieJar.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/LookupResult.h"
#include "core/lookup/PictureDownloader.h"
#include "core/lookup/PictureFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QTimer>

namespace marvik::gui {

LookupController::LookupController(MainWindow *window, QNetworkAccessManager *network)
    : QObject(window)
    , m_window(window)
    , m_network(network ? network : new QNetworkAccessManager(this))
{
    setObjectName(QStringLiteral("lookupController"));
    if (window->store())
        m_sources = lookup::SourceSettings::load(*window->store());
    m_jar = new lookup::CookieJar(window->dataFolder().path());
    m_network->setCookieJar(m_jar);

    m_lookUp = new lookup::LookUp(m_network, m_sources, window->settings().ownCallsign, this);
    m_lookUp->setObjectName(QStringLiteral("ucLookUp"));
    m_dnLoad = new lookup::PictureDownloader(m_network, this);
    m_dnLoad->setObjectName(QStringLiteral("ucDnLoad"));

    connect(m_lookUp, &lookup::LookUp::GotSite, this, &LookupController::gotSite);
    connect(m_lookUp, &lookup::LookUp::GotPage, this, [this](const QString &call, bool) { gotPage(call); });
    connect(m_lookUp, &lookup::LookUp::PageNotFound, this, &LookupController::pageNotFound);
    connect(m_lookUp, &lookup::LookUp::CallNotFound, this, &LookupController::callNotFound);
    connect(m_lookUp, &lookup::LookUp::LoginRequired, this, &LookupController::loginRequired);
    connect(m_lookUp, &lookup::LookUp::requestFailed, this, &LookupController::requestFailed);
    connect(m_dnLoad, &lookup::PictureDownloader::Progress, this, &LookupController::pictureProgress);
    connect(m_dnLoad, &lookup::PictureDownloader::DownloadComplete, this, &LookupController::pictureDownloaded);
    connect(m_dnLoad, &lookup::PictureDownloader::downloadFailed, this, &LookupController::pictureFailed);

    connect(window->timer(4), &QTimer::timeout, this, &LookupController::timedOut);
    connect(window, &MainWindow::lookupRequested, this, &LookupController::lookupRequested);
    connect(window, &MainWindow::updateRequested, this, &LookupController::updateRequested);
    connect(window, &MainWindow::pictureRequested, this, &LookupController::showPicture);
    connect(window, &MainWindow::loginRequested, this, &LookupController::openLogin);
    connect(window, &MainWindow::sourceChanged, this, &LookupController::checkLogin);
    connect(window, &MainWindow::closingDown, this, [this] {
        if (m_login)
            m_login->close();
        if (m_viewer)
            m_viewer->close();
    });

    if (!window->isStarting())
        checkLogin();
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

void LookupController::checkLogin()
{
    const lookup::Source source = m_window->currentSource();
    if (!lookup::isOnline(source))
        return;
    m_lookUp->setOwnCallsign(m_window->settings().ownCallsign);
    m_lookUp->setCurrentSource(source);
    m_lookUp->setDataBase(lookup::dataBaseOf(source));
    m_lookUp->GetSite();
}

void LookupController::gotSite(const QString &subject, bool loggedIn)
{
    // A late answer from the source chosen before must not label this one.
    const lookup::Source source = m_window->currentSource();
    if (!lookup::isOnline(source) || subject != lookup::requestLabel(m_sources, source))
        return;
    const i18n::Texts &texts = m_window->texts();
    // Callook needs no log-in, so its site never says whether one is made.
    const QString suffix = source == lookup::Source::Callook ? texts[i18n::TextId::LoginNotNeeded]
                           : loggedIn                    ? texts[i18n::TextId::LoggedIn]
                                                         : texts[i18n::TextId::LoginNeeded];
    m_window->setDatabaseCaption(m_window->sourceLabel() + suffix);
}

QString LookupController::typedCallsign() const
{
    return callsign::asTyped(m_window->callBox()->text());
}

void LookupController::lookupRequested(const QString &callSign)
{
    const QString typed = typedCallsign();
    startLookup(callSign, callsign::forLookup(typed) == callSign ? typed : callSign, {});
}

void LookupController::updateRequested(int row)
{
    const lists::CallListModel *model = m_window->currentModel();
    if (row < 0 || row >= model->rowCount())
        return;
    const QString rowCall = model->record(row)[lists::Column::Callsign];
    const QString call = callsign::forLookup(rowCall);
    if (call.isEmpty())
        return;
    startLookup(call, rowCall, rowCall);
}

void LookupController::startLookup(const QString &callSign, const QString &typed, const QString &rowCallsign)
{
    const lookup::Source source = m_window->currentSource();
    if (!lookup::isOnline(source)) {
        m_window->showStatusAlarm(m_window->texts()[i18n::TextId::NoOnlineSource]);
        return;
    }
    m_call = callSign;
    m_typed = typed;
    m_rowCallsign = rowCallsign;
    m_list = m_window->currentList();
    m_dataBase = lookup::dataBaseOf(source);
    qCDebug(lcLookup) << "looking up" << callSign << "on source" << m_dataBase;

    m_lookUp->setOwnCallsign(m_window->settings().ownCallsign);
    m_lookUp->setCurrentSource(source);
    m_lookUp->setDataBase(m_dataBase);
    m_window->timer(4)->start();
    m_lookUp->GetPage(callSign + u'2');
}

void LookupController::gotPage(const QString &callSign)
{
    if (callSign != m_call)
        return;
    m_window->timer(4)->stop();
    // The readers follow data_base; a log-in check for another source may
    // have changed it while the page was on its way.
    m_lookUp->setDataBase(m_dataBase);
    const lookup::LookupResult result = lookup::readLookupResult(*m_lookUp, callSign);
    switch (result.outcome) {
    case lookup::LookupOutcome::Found:
        writeRow(result);
        break;
    case lookup::LookupOutcome::ReaderError:
        qCWarning(lcLookup) << "the page of" << callSign << "could not be read:" << result.error;
        m_window->showStatusAlarm(
            i18n::fillIn(m_window->texts()[i18n::TextId::PageUnreadable], callSign, lookup::menuLabel(m_sources, *lookup::onlineSourceFromDataBase(m_dataBase))),
            true);
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
    lists::CallListModel *model = m_window->model(m_list);
    const QString key = m_rowCallsign.isEmpty() ? m_call : m_rowCallsign;
    const int row = model->findCallsign(key);
    const bool existing = row >= 0;
    lists::CallRecord record = existing ? model->record(row) : lists::CallRecord();
    // An updated row keeps its callsign as the list has it, so its thumbnail
    // and its place in other lists still match.
    lookup::writeLookupResult(record, existing, key, result, m_window->settings().me, QDateTime::currentDateTime());
    if (existing) {
        model->replaceRecord(row, record);
    } else {
        const QString thumb = QDir(m_window->dataFolder().thumbsDir()).filePath(callsign::fileName(key) + u".jpg");
        if (QFileInfo::exists(thumb))
            record.thumbnail = thumb;
        model->appendRecord(record);
    }
    m_window->listChanged(m_list);
    if (m_list == m_window->currentList()) {
        const int at = model->findCallsign(key);
        m_window->setCurrentRow(at);
        m_window->grid(m_list)->scrollTo(model->index(at, lists::Column::Callsign));
    }
    startPicture(key, m_typed);
}

void LookupController::startPicture(const QString &callSign, const QString &typed)
{
    const QString address = lookup::pictureAddress(m_sources.picturesHost(), typed.isEmpty() ? callSign : typed);
    m_window->showPictureProgress(0, 0);
    m_dnLoad->DownloadFile(address, lookup::PictureDownloader::kForceUpdate, callSign);
}

void LookupController::pageNotFound(const QString &callSign)
{
    if (callSign != m_call)
        return;
    m_window->timer(4)->stop();
    m_window->showStatusAlarm(i18n::fillIn(m_window->texts()[i18n::TextId::NotFound], callSign), true);
}

void LookupController::callNotFound(const QString &callSign)
{
    m_window->timer(4)->stop();
    m_window->showStatusAlarm(i18n::fillIn(m_window->texts()[i18n::TextId::NotFound], callSign), true);
}

void LookupController::loginRequired(const QString &)
{
    m_window->timer(4)->stop();
    m_window->showStatusAlarm(m_window->texts()[i18n::TextId::LoginRequired], true);
}

void LookupController::timedOut()
{
    m_window->timer(4)->stop();
    m_window->showStatusAlarm(i18n::fillIn(m_window->texts()[i18n::TextId::NotFound], m_call));
}

void LookupController::requestFailed(const QString &name, const QString &reason)
{
    qCInfo(lcLookup) << "request" << name << "failed:" << reason;
    // Only the page of the lookup in progress ends it early; the user need
    // not wait for the time-out to learn the callbook cannot be reached.
    if (name != m_call + u'2' || !m_window->timer(4)->isActive())
        return;
    m_window->timer(4)->stop();
    m_window->showStatusAlarm(i18n::fillIn(m_window->texts()[i18n::TextId::NetworkFailure], m_call, reason));
}

void LookupController::pictureProgress(qint64 done, qint64 total, const QString &)
{
    m_window->showPictureProgress(done, total);
}

void LookupController::pictureDownloadsEnded(const QString &name)
{
    // The finished download is still listed while its event runs.
    QStringList pending = m_dnLoad->pendingDownloads();
    pending.removeOne(name);
    if (pending.isEmpty())
        m_window->hidePictureProgress();
}

void LookupController::pictureDownloaded(const QString &name)
{
    pictureDownloadsEnded(name);
    const lookup::StoredPicture stored = lookup::storePicture(m_window->dataFolder(), name, m_dnLoad->bytes());
    if (stored.status != lookup::PictureStatus::Saved) {
        pictureFailed(name, stored.error);
        return;
    }
    // Every list that holds the call shows the new thumbnail at once.
    for (int n = 1; n <= 5; ++n) {
        lists::CallListModel *model = m_window->model(n);
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->record(row)[lists::Column::Callsign] == name)
                model->setThumbnail(row, stored.thumbnailPath);
        }
    }
}

void LookupController::pictureFailed(const QString &name, const QString &reason)
{
    pictureDownloadsEnded(name);
    qCInfo(lcLookup) << "no picture of" << name << reason;
    m_window->showStatusAlarm(i18n::fillIn(m_window->texts()[i18n::TextId::NoPicture], name, reason));
}

void LookupController::showPicture(int row, bool fromThumbnail)
{
    const lists::CallListModel *model = m_window->currentModel();
    if (row < 0 || row >= model->rowCount())
        return;
    const QString call = model->record(row)[lists::Column::Callsign];
    const QString path = QDir(m_window->dataFolder().imagesDir()).filePath(callsign::fileName(call) + u".jpg");
    if (m_viewer)
        m_viewer->close();
    auto *viewer = new ImageViewer(m_window);
    if (!viewer->load(path)) {
        delete viewer;
        QMessageBox box(QMessageBox::Warning, QStringLiteral("Marvik"), lookup::corruptPictureMessage(),
                        QMessageBox::Ok, m_window);
        box.exec();
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
    const lookup::Source source = m_window->currentSource();
    const QString site = lookup::siteAddress(m_sources, source);
    if (site.isEmpty())
        return;
    if (m_login)
        m_login->close();
    auto *login = new LoginWindow(QUrl(site), m_jar, m_window);
    connect(login, &LoginWindow::closed, this, &LookupController::checkLogin);
    m_login = login;
    login->show();
}

} // namespace marvik::gui
