// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QUrl>
#include <QWidget>

class QLabel;

namespace marvik::lookup {
class CookieJar;
}

namespace marvik::gui {

class WebModule;

/// The web module, loaded on first use. Null when it cannot be loaded;
/// `why` then says why.
WebModule *webModule(lookup::CookieJar &jar, QString *why = nullptr);
/// Whether the web module has been loaded in this run.
bool isWebModuleLoaded();

/// A browser view in a window of Marvik's: the module's view when the web
/// module loads, else a line that says why there is no browser.
class WebView : public QWidget
{
    Q_OBJECT

public:
    WebView(lookup::CookieJar &jar, QWidget *parent = nullptr);

    bool isAvailable() const { return m_view != nullptr; }
    /// Why there is no browser, when there is none.
    QString unavailableReason() const { return m_why; }
    /// The line shown in place of the browser; "xxx" stands for the reason.
    void setUnavailableText(const QString &text);
    void load(const QUrl &url);
    /// The browser's own widget (for a picture of what it shows).
    QWidget *content() const { return m_view; }

signals:
    void loadFinished(bool ok);
    void titleChanged(const QString &title);

private:
    WebModule *m_module = nullptr;
    QPointer<QWidget> m_view;
    QLabel *m_line = nullptr;
    QString m_why;
};

} // namespace marvik::gui
