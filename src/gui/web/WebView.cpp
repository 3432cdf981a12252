// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/web/WebView.h"

#include "core/app/Log.h"
#include "core/lookup/CookieJar.h"
#include "gui/web/WebModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QLibrary>
#include <QVBoxLayout>

namespace marvik::gui {

namespace {

struct Loaded
{
    bool tried = false;
    WebModule *module = nullptr;
    QString why;
};

Loaded &loaded()
{
    static Loaded l;
    return l;
}

/// Beside the program as installed (lib/.../marvik) and in the build tree,
/// which mirrors an installation.
QString modulePath()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../")
                           + QStringLiteral(MARVIK_WEB_SUBDIR) + QStringLiteral("/libmarvik_web.so"));
}

} // namespace

WebModule *webModule(lookup::CookieJar &jar, QString *why)
{
    Loaded &l = loaded();
    if (!l.tried) {
        l.tried = true;
        // Stays loaded for the rest of the run: the web engine cannot be
        // started twice in one process.
        auto *library = new QLibrary(modulePath(), qApp);
        library->setLoadHints(QLibrary::PreventUnloadHint);
        if (auto entry = reinterpret_cast<MarvikWebModuleEntry *>(library->resolve(MARVIK_WEB_MODULE_ENTRY))) {
            l.module = entry();
            l.module->start(&jar, jar.cookies());
            qCInfo(lcApp) << "web module loaded from" << library->fileName();
        } else {
            l.why = library->errorString();
            qCWarning(lcApp) << "no web module:" << l.why;
        }
    }
    if (why)
        *why = l.why;
    return l.module;
}

bool isWebModuleLoaded()
{
    return loaded().module != nullptr;
}

WebView::WebView(lookup::CookieJar &jar, QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_module = webModule(jar, &m_why);
    if (!m_module) {
        m_line = new QLabel(m_why, this);
        m_line->setObjectName(QStringLiteral("lblNoWeb"));
        m_line->setWordWrap(true);
        m_line->setAlignment(Qt::AlignCenter);
        layout->addWidget(m_line);
        return;
    }
    QPointer<WebView> self(this);
    m_view = m_module->createView(
        this, [self](bool ok) { if (self) emit self->loadFinished(ok); },
        [self](const QString &title) { if (self) emit self->titleChanged(title); });
    layout->addWidget(m_view);
}

void WebView::setUnavailableText(const QString &text)
{
    if (m_line)
        m_line->setText(QString(text).replace(QStringLiteral("xxx"), m_why));
}

void WebView::load(const QUrl &url)
{
    if (m_module && m_view)
        m_module->load(m_view, url);
}

} // namespace marvik::gui
