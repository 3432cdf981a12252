// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lookup/LoginWindow.h"

#include "core/i18n/Texts.h"
#include "gui/web/WebView.h"

#include <QCloseEvent>
#include <QVBoxLayout>

namespace marvik::gui {

LoginWindow::LoginWindow(const QUrl &site, lookup::CookieJar *jar, QWidget *parent, const i18n::CurrentTexts *texts)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("frmLogin"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Marvik - %1").arg(site.host()));
    resize(900, 700);

    m_view = new WebView(*jar, this);
    m_view->setObjectName(QStringLiteral("webLogin"));
    const i18n::Texts english = i18n::Texts::english();
    m_view->setUnavailableText(texts ? (*texts)[i18n::TextId::WebUnavailable] : english[i18n::TextId::WebUnavailable]);
    connect(m_view, &WebView::titleChanged, this, [this, site](const QString &title) {
        setWindowTitle(QStringLiteral("Marvik - %1").arg(title.isEmpty() ? site.host() : title));
    });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    m_view->load(site);
}

void LoginWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closed();
}

} // namespace marvik::gui
