// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>
#include <QWidget>

class QWebEngineProfile;
class QWebEngineView;

namespace marvik::lookup {
class CookieJar;
}

namespace marvik::gui {

class CookieBridge;

/// A browser window on a callbook's site, for logging in. It keeps no
/// cookies of its own: it starts from Marvik's cookie jar and gives back to
/// it whatever the site sets, so the lookups see the log-in.
class LoginWindow : public QWidget
{
    Q_OBJECT

public:
    LoginWindow(const QUrl &site, lookup::CookieJar *jar, QWidget *parent = nullptr);
    ~LoginWindow() override;

    QWebEngineView *view() const { return m_view; }

signals:
    /// The window has closed; the log-in state may have changed.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QWebEngineProfile *m_profile = nullptr;
    QWebEngineView *m_view = nullptr;
    CookieBridge *m_bridge = nullptr;
};

} // namespace marvik::gui
