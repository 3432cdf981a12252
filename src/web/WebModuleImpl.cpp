// SPDX-License-Identifier: GPL-3.0-or-later
// The web module: Qt WebEngine behind Marvik's WebModule interface. Loaded
// only when a web window first opens.
#include "gui/web/WebModule.h"
#include "web/CookieBridge.h"

#include <QCoreApplication>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

namespace marvik::web {

namespace {

class WebEngineModule final : public gui::WebModule
{
public:
    void start(QNetworkCookieJar *jar, const QList<QNetworkCookie> &cookies) override
    {
        // One off-the-record profile for every web window of the run: the
        // cookies live in Marvik's jar, which the bridge fills the profile
        // from and writes back to; nothing else of the browsing is kept.
        m_profile = new QWebEngineProfile(qApp);
        m_profile->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
        m_profile->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
        m_bridge = new CookieBridge(m_profile->cookieStore(), jar, cookies, m_profile);
    }

    QWidget *createView(QWidget *parent, std::function<void(bool)> loaded,
                        std::function<void(const QString &)> titled) override
    {
        auto *view = new QWebEngineView(parent);
        auto *page = new QWebEnginePage(m_profile, view);
        view->setPage(page);
        QObject::connect(page, &QWebEnginePage::loadFinished, view, std::move(loaded));
        QObject::connect(page, &QWebEnginePage::titleChanged, view, std::move(titled));
        // The page goes with its view, before the profile it was made with.
        QObject::connect(view, &QObject::destroyed, page, [page] { delete page; });
        return view;
    }

    void load(QWidget *view, const QUrl &url) override
    {
        if (auto *web = qobject_cast<QWebEngineView *>(view))
            web->load(url);
    }

private:
    QWebEngineProfile *m_profile = nullptr;
    CookieBridge *m_bridge = nullptr;
};

} // namespace

} // namespace marvik::web

extern "C" Q_DECL_EXPORT marvik::gui::WebModule *marvikWebModule()
{
    static marvik::web::WebEngineModule module;
    return &module;
}
