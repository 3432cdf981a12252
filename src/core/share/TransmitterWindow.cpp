// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/share/TransmitterWindow.h"

#include "core/app/Log.h"

#ifdef MARVIK_HAVE_XDO
#include "core/share/XdoSession.h"
#endif

namespace marvik::share {

TransmitterWindow::~TransmitterWindow() = default;

#ifdef MARVIK_HAVE_XDO
namespace {

/// EasyPal under Wine is an ordinary X11 window, found and driven through
/// libxdo; XWayland makes this work in a Wayland session too.
class X11TransmitterWindow final : public TransmitterWindow
{
public:
    explicit X11TransmitterWindow(std::unique_ptr<x11::XdoSession> session)
        : m_session(std::move(session))
    {
    }

    WindowId find(const QString &title) override
    {
        const QByteArray utf8 = title.toUtf8();
        return m_session->find(std::string(utf8.constData(), std::size_t(utf8.size())));
    }
    bool isMinimised(WindowId window) override { return m_session->isMinimised(window); }
    void bringToFront(WindowId window) override { m_session->bringToFront(window); }
    void restore(WindowId window) override { m_session->restore(window); }
    bool seesEveryWindow() const override { return qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"); }
    bool sendKey(Qt::Key key) override
    {
        if (key < Qt::Key_F1 || key > Qt::Key_F35) {
            qCWarning(lcShare) << "no X11 name for key" << key;
            return false;
        }
        // X names the function keys "F1".."F35" like Qt does.
        const QByteArray name = 'F' + QByteArray::number(key - Qt::Key_F1 + 1);
        return m_session->sendKey(name.constData());
    }

private:
    std::unique_ptr<x11::XdoSession> m_session;
};

} // namespace
#endif

std::unique_ptr<TransmitterWindow> createTransmitterWindow()
{
#ifdef MARVIK_HAVE_XDO
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        qCInfo(lcShare) << "no X display: EasyPal's window cannot be driven";
        return nullptr;
    }
    if (auto session = x11::XdoSession::open())
        return std::make_unique<X11TransmitterWindow>(std::move(session));
    qCWarning(lcShare) << "cannot open the X display" << qgetenv("DISPLAY") << "to drive EasyPal's window";
    return nullptr;
#else
    qCInfo(lcShare) << "this build cannot drive EasyPal's window";
    return nullptr;
#endif
}

} // namespace marvik::share
