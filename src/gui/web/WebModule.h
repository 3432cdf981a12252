// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QNetworkCookie>
#include <QString>
#include <QUrl>

#include <functional>

class QNetworkCookieJar;
class QWidget;

namespace marvik::gui {

/// What the web module offers: browser views on the program's one web
/// profile. The module (libmarvik_web, the only part that links Qt
/// WebEngine) is loaded the first time a web window opens, so starting
/// Marvik neither loads nor starts the web engine. The interface is plain
/// C++, so no meta-object crosses between the program and the module.
class WebModule
{
public:
    virtual ~WebModule() = default;

    /// Makes the one web profile, its cookies kept in step with `jar`: the
    /// jar's present `cookies` go into the browser, and every cookie the
    /// browser sets or drops goes into the jar. Called once, first.
    virtual void start(QNetworkCookieJar *jar, const QList<QNetworkCookie> &cookies) = 0;

    /// A browser view on the profile, for a window to embed. `loaded` hears
    /// the end of each page load, `titled` each new page title.
    virtual QWidget *createView(QWidget *parent, std::function<void(bool ok)> loaded,
                                std::function<void(const QString &title)> titled) = 0;
    virtual void load(QWidget *view, const QUrl &url) = 0;
};

} // namespace marvik::gui

/// The module's one entry point, looked up by name when it is loaded.
extern "C" using MarvikWebModuleEntry = marvik::gui::WebModule *();
#define MARVIK_WEB_MODULE_ENTRY "marvikWebModule"
