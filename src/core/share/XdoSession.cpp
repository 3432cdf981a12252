// SPDX-License-Identifier: GPL-3.0-or-later
// No Qt header may come into this file: see XdoSession.h.
#include "core/share/XdoSession.h"

// libxdo's header carries no C++ linkage of its own.
extern "C" {
#include <xdo.h>
}
#include <algorithm>
#include <cstring>
#include <vector>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace marvik::share::x11 {

namespace {

// A window can vanish between any two requests (the user closes EasyPal
// while Marvik looks at it); Xlib's default handler would end the program
// for the error that follows. The trap counts errors on our own connection
// while one request of ours runs and hands any other display's errors on.
Display *g_trapped = nullptr;
int g_errors = 0;
XErrorHandler g_previous = nullptr;

int onXError(Display *display, XErrorEvent *event)
{
    if (display == g_trapped) {
        ++g_errors;
        return 0;
    }
    return g_previous ? g_previous(display, event) : 0;
}

class ErrorTrap
{
public:
    explicit ErrorTrap(Display *display)
        : m_display(display)
    {
        g_trapped = display;
        g_errors = 0;
        g_previous = XSetErrorHandler(onXError);
    }
    ~ErrorTrap()
    {
        // Errors arrive with the replies: collect them before the handler goes.
        XSync(m_display, False);
        XSetErrorHandler(g_previous);
        g_trapped = nullptr;
    }
    ErrorTrap(const ErrorTrap &) = delete;
    ErrorTrap &operator=(const ErrorTrap &) = delete;
    bool failed() const
    {
        XSync(m_display, False);
        return g_errors > 0;
    }

private:
    Display *m_display;
};


} // namespace

struct XdoSession::Private
{
    xdo_t *xdo = nullptr;
    Display *display = nullptr;
    Window root = 0;

    Atom atom(const char *name) const { return XInternAtom(display, name, False); }

    /// A property of 32-bit items (atoms, windows, cardinals); empty when missing.
    std::vector<unsigned long> longs(Window window, const char *property, Atom type) const
    {
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long after = 0;
        unsigned char *data = nullptr;
        std::vector<unsigned long> out;
        if (XGetWindowProperty(
                display, window, atom(property), 0, 1024, False, type, &actualType, &format, &count, &after, &data)
                == Success
            && data != nullptr) {
            if (format == 32) {
                // Xlib hands 32-bit items over as longs, whatever a long's size.
                const auto *items = reinterpret_cast<const unsigned long *>(static_cast<void *>(data));
                out.assign(items, items + count);
            }
            XFree(data);
        }
        return out;
    }

    /// The title as window managers show it: _NET_WM_NAME, else WM_NAME, as UTF-8.
    std::string title(Window window) const
    {
        Atom actualType = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long after = 0;
        unsigned char *data = nullptr;
        std::string out;
        if (XGetWindowProperty(display, window, atom("_NET_WM_NAME"), 0, 4096, False, atom("UTF8_STRING"), &actualType,
                &format, &count, &after, &data)
                == Success
            && data != nullptr) {
            if (format == 8)
                out.assign(reinterpret_cast<const char *>(data), count);
            XFree(data);
            if (format == 8)
                return out;
        }
        XTextProperty property {};
        if (XGetWMName(display, window, &property) == 0 || property.value == nullptr)
            return out;
        char **list = nullptr;
        int items = 0;
        if (Xutf8TextPropertyToTextList(display, &property, &list, &items) >= Success && list != nullptr) {
            if (items > 0 && list[0] != nullptr)
                out = list[0];
            XFreeStringList(list);
        }
        XFree(property.value);
        return out;
    }

    /// ICCCM state: 1 normal, 3 iconic; 0 for a window no window manager manages.
    unsigned long wmState(Window window) const
    {
        const Atom wmStateAtom = atom("WM_STATE");
        const std::vector<unsigned long> state = longs(window, "WM_STATE", wmStateAtom);
        return state.empty() ? 0 : state.front();
    }

    /// Minimised: iconic by ICCCM, or hidden by EWMH.
    bool isIconic(Window window) const
    {
        if (wmState(window) == IconicState)
            return true;
        const std::vector<unsigned long> states = longs(window, "_NET_WM_STATE", atom("ATOM"));
        return std::find(states.begin(), states.end(), atom("_NET_WM_STATE_HIDDEN")) != states.end();
    }

    bool viewable(Window window) const
    {
        XWindowAttributes attributes {};
        return XGetWindowAttributes(display, window, &attributes) != 0 && attributes.map_state == IsViewable;
    }

    Window parent(Window window) const
    {
        Window rootReturn = 0;
        Window parentReturn = 0;
        Window *children = nullptr;
        unsigned int count = 0;
        if (XQueryTree(display, window, &rootReturn, &parentReturn, &children, &count) == 0)
            return 0;
        if (children != nullptr)
            XFree(children);
        return parentReturn;
    }

    /// The first top-level window below `window` whose title is exactly
    /// `title`. Walked by hand rather than with libxdo's search, which
    /// matches case-insensitively anyway and can free a child list twice
    /// when a window vanishes while it walks.
    Window findTitled(Window window, const std::string &wanted, int depth) const
    {
        // Programs' windows sit right below the root, or below a window
        // manager's frame or two.
        constexpr int kMaxDepth = 4;
        Window rootReturn = 0;
        Window parentReturn = 0;
        Window *children = nullptr;
        unsigned int count = 0;
        if (XQueryTree(display, window, &rootReturn, &parentReturn, &children, &count) == 0)
            return 0;
        const std::vector<Window> list(children, children + (children ? count : 0));
        if (children != nullptr)
            XFree(children);
        // Topmost first: the window the user sees wins over one behind it.
        for (auto it = list.rbegin(); it != list.rend(); ++it) {
            if (title(*it) == wanted && isTopLevel(*it))
                return *it;
        }
        if (depth + 1 >= kMaxDepth)
            return 0;
        for (auto it = list.rbegin(); it != list.rend(); ++it) {
            if (const Window found = findTitled(*it, wanted, depth + 1))
                return found;
        }
        return 0;
    }

    /// A program's own window: one a window manager manages (shown or
    /// minimised) or, with no window manager, a shown child of the root.
    /// Withdrawn windows such as hidden helper windows do not count.
    bool isTopLevel(Window window) const
    {
        if (wmState(window) != 0)
            return true;
        return parent(window) == root && viewable(window);
    }

    /// A running window manager that activates windows on request. A
    /// crashed one leaves its properties on the root, so its check window
    /// must still name itself.
    bool canActivate() const
    {
        const std::vector<unsigned long> check = longs(root, "_NET_SUPPORTING_WM_CHECK", atom("WINDOW"));
        if (check.empty() || check.front() == 0)
            return false;
        const std::vector<unsigned long> self
            = longs(Window(check.front()), "_NET_SUPPORTING_WM_CHECK", atom("WINDOW"));
        if (self.empty() || self.front() != check.front())
            return false;
        const std::vector<unsigned long> supported = longs(root, "_NET_SUPPORTED", atom("ATOM"));
        return std::find(supported.begin(), supported.end(), atom("_NET_ACTIVE_WINDOW")) != supported.end();
    }

    void raiseAndFocus(Window window) const
    {
        if (canActivate()) {
            // Asked as a pager asks (source 2), which window managers grant
            // without their focus-stealing checks. libxdo's own activation
            // reads and keeps the manager's whole list of features each time.
            XEvent event {};
            event.xclient.type = ClientMessage;
            event.xclient.window = window;
            event.xclient.message_type = atom("_NET_ACTIVE_WINDOW");
            event.xclient.format = 32;
            event.xclient.data.l[0] = 2;
            event.xclient.data.l[1] = CurrentTime;
            XSendEvent(display, root, False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
            XFlush(display);
            return;
        }
        // No window manager to ask: map it on top and take the focus ourselves.
        XMapRaised(display, window);
        XSync(display, False);
        XSetInputFocus(display, window, RevertToParent, CurrentTime);
    }
};

XdoSession::XdoSession(std::unique_ptr<Private> p)
    : d(std::move(p))
{
}

XdoSession::~XdoSession()
{
    if (d->xdo != nullptr)
        xdo_free(d->xdo); // closes the display it opened
}

std::unique_ptr<XdoSession> XdoSession::open()
{
    xdo_t *xdo = xdo_new(nullptr);
    if (xdo == nullptr)
        return nullptr;
    // libxdo would print its complaints on the terminal; what failed shows
    // in what the calls return.
    xdo->quiet = 1;
    auto p = std::make_unique<Private>();
    p->xdo = xdo;
    p->display = xdo->xdpy;
    p->root = XDefaultRootWindow(xdo->xdpy);
    return std::unique_ptr<XdoSession>(new XdoSession(std::move(p)));
}

unsigned long XdoSession::find(const std::string &utf8Title)
{
    ErrorTrap trap(d->display);
    return d->findTitled(d->root, utf8Title, 0);
}

bool XdoSession::isMinimised(unsigned long window)
{
    ErrorTrap trap(d->display);
    return d->isIconic(window);
}

void XdoSession::bringToFront(unsigned long window)
{
    ErrorTrap trap(d->display);
    d->raiseAndFocus(window);
}

void XdoSession::restore(unsigned long window)
{
    ErrorTrap trap(d->display);
    if (!d->isIconic(window) && d->viewable(window))
        return;
    // Mapping an iconic window asks its window manager to show it normally;
    // the activation that follows brings it forward as a restore does.
    XMapWindow(d->display, window);
    d->raiseAndFocus(window);
}

bool XdoSession::sendKey(const char *keysymName)
{
    ErrorTrap trap(d->display);
    Window target = CURRENTWINDOW;
    if (xdo_has_feature(d->xdo, XDO_FEATURE_XTEST) == 0) {
        // Without XTEST the key can only be sent as an event to the window
        // that has the focus.
        int revert = 0;
        XGetInputFocus(d->display, &target, &revert);
        if (target == None || target == PointerRoot)
            return false;
    }
    const int result = xdo_send_keysequence_window(d->xdo, target, keysymName, 0);
    XFlush(d->display);
    return result == XDO_SUCCESS && !trap.failed();
}

} // namespace marvik::share::x11
