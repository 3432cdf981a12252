// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>
#include <QWidget>

namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lookup {
class CookieJar;
}

namespace marvik::gui {

class WebView;

/// A browser window on a callbook's site, for logging in. Its browser uses
/// the program's one web profile, whose cookies are kept in step with
/// Marvik's cookie jar, so a log-in made here holds for the lookups and
/// survives a restart.
class LoginWindow : public QWidget
{
    Q_OBJECT

public:
    LoginWindow(const QUrl &site, lookup::CookieJar *jar, QWidget *parent = nullptr,
                const i18n::CurrentTexts *texts = nullptr);

    WebView *view() const { return m_view; }

signals:
    /// The window has closed; the log-in state may have changed.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    WebView *m_view = nullptr;
};

} // namespace marvik::gui
