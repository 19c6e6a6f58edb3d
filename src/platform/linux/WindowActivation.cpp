#include "platform/linux/WindowActivation.h"

#include <QGuiApplication>
#include <QWindow>
#include <QtGui/qguiapplication_platform.h>

#include <cstdlib>
#include <optional>
#include <xcb/xcb.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Where Qt's window of Wayland looks for it, and what X11 calls the same.
constexpr const char *waylandToken = "XDG_ACTIVATION_TOKEN";
constexpr const char *x11Token = "DESKTOP_STARTUP_ID";
constexpr qsizetype longest = 256; // of what comes from other programs

// A token that was offered as the other kind serves as well: an X11 one may come by either name.
std::optional<xcb_timestamp_t> momentOffered()
{
    for (const char *name : {x11Token, waylandToken}) {
        const QString token = qEnvironmentVariable(name);
        const qsizetype at = token.lastIndexOf("_TIME"_L1);
        bool isNumber = false;
        const uint moment = at < 0 ? 0 : token.mid(at + 5).toUInt(&isNumber);
        if (isNumber)
            return moment;
    }
    return std::nullopt;
}

xcb_atom_t atomOf(xcb_connection_t *server, const char *name, std::uint16_t length)
{
    auto *const reply = xcb_intern_atom_reply(server, xcb_intern_atom(server, 0, length, name), nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return atom;
}

// As requestActivate() asks the window manager, but with the moment of what the person did: with an older one
// it would keep the window back, for who still types elsewhere.
void activate(xcb_connection_t *server, xcb_window_t window, xcb_timestamp_t moment)
{
    const xcb_atom_t userTime = atomOf(server, "_NET_WM_USER_TIME", 17);
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, window, userTime, XCB_ATOM_CARDINAL, 32, 1, &moment);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atomOf(server, "_NET_ACTIVE_WINDOW", 18);
    constexpr std::uint32_t fromApplication = 1;
    event.data.data32[0] = fromApplication;
    event.data.data32[1] = moment;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    xcb_send_event(server, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(server);
}

} // namespace

QString WindowActivation::offered()
{
    const QString token = qEnvironmentVariable(waylandToken);
    return token.isEmpty() ? qEnvironmentVariable(x11Token) : token;
}

void WindowActivation::offer(const QString &token)
{
    if (!token.isEmpty() && token.size() <= longest)
        qputenv(QGuiApplication::platformName() == "xcb"_L1 ? x11Token : waylandToken, token.toUtf8());
}

void WindowActivation::bringUp(QWindow &window)
{
    window.raise();
    window.requestActivate(); // which takes a Wayland token
    const auto *const x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (const auto moment = momentOffered(); x11 && moment)
        activate(x11->connection(), xcb_window_t(window.winId()), *moment);
    qunsetenv(x11Token); // good for once, and not for the programs that this one starts
    qunsetenv(waylandToken);
}

} // namespace morvane
