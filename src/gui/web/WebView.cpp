// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/web/WebView.h"

#include "core/app/Log.h"
#include "core/lookup/CookieJar.h"
#include "gui/web/WebModule.h"

#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QLibrary>
#include <QOpenGLContext>
#include <QVBoxLayout>

#if QT_CONFIG(opengl)
// Qt's own hooks for the context every other OpenGL context shares with;
// exported by Qt GUI for the web engine and declared in no public header.
Q_GUI_EXPORT QOpenGLContext *qt_gl_global_share_context();
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);
#endif

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

/// The web engine draws through OpenGL contexts shared with the window's
/// own. Asked at start-up, QApplication makes that shared context at once
/// and maps the graphics driver (tens of MiB) into every run; made here,
/// just before the engine starts, only a run that opens a web window pays.
/// No OpenGL context exists before this one (the windows are raster), so
/// none misses the sharing. The context is set even when the display has
/// no OpenGL, as QApplication does: the engine then sees it is not valid
/// and draws in software, where no context at all would crash it.
void shareOpenGlContexts()
{
#if QT_CONFIG(opengl)
    if (qt_gl_global_share_context())
        return;
    auto *context = new QOpenGLContext;
    context->setFormat(QSurfaceFormat::defaultFormat());
    if (!context->create())
        qCInfo(lcApp) << "no OpenGL: the web engine draws in software";
    qt_gl_set_global_share_context(context);
    {
        // Qt warns that the attribute belongs before the application is
        // made, lest a context made earlier miss the sharing; none was.
        static QtMessageHandler previous = nullptr;
        previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &where, const QString &text) {
            if (!text.contains(u"AA_ShareOpenGLContexts"))
                previous(type, where, text);
        });
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
        qInstallMessageHandler(previous);
    }
    // Removed after the web engine's own clean-up, which runs first: the
    // later a routine is added, the sooner it runs.
    qAddPostRoutine([] {
        QOpenGLContext *shared = qt_gl_global_share_context();
        qt_gl_set_global_share_context(nullptr);
        delete shared;
    });
#endif
}

} // namespace

WebModule *webModule(lookup::CookieJar &jar, QString *why)
{
    Loaded &l = loaded();
    if (!l.tried) {
        l.tried = true;
        // Stays loaded for the rest of the run: the web engine cannot be
        // started twice in one process.
        shareOpenGlContexts();
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
