// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lookup/LoginWindow.h"

#include "gui/lookup/CookieBridge.h"

#include <QCloseEvent>
#include <QVBoxLayout>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

namespace marvik::gui {

LoginWindow::LoginWindow(const QUrl &site, lookup::CookieJar *jar, QWidget *parent)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("frmLogin"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Marvik - %1").arg(site.host()));
    resize(900, 700);

    // An off-the-record profile: the cookies live in Marvik's jar, which the
    // bridge fills the profile from and writes back to; nothing else of the
    // browsing is kept.
    m_profile = new QWebEngineProfile(this);
    m_profile->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
    m_profile->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    m_bridge = new CookieBridge(m_profile->cookieStore(), jar, this);

    m_view = new QWebEngineView(this);
    m_view->setObjectName(QStringLiteral("webLogin"));
    auto *page = new QWebEnginePage(m_profile, m_view);
    m_view->setPage(page);
    connect(page, &QWebEnginePage::titleChanged, this, [this, site](const QString &title) {
        setWindowTitle(QStringLiteral("Marvik - %1").arg(title.isEmpty() ? site.host() : title));
    });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    m_view->load(site);
}

LoginWindow::~LoginWindow()
{
    // The page must go before the profile it was made with.
    delete m_view;
}

void LoginWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closed();
}

} // namespace marvik::gui
