#pragma once

#include <QPoint>
#include <QRect>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace morvane {

// The windows of an X server, as another of its clients sees them. Any thread, one at a time for a
// connection.
namespace X11Windows {

struct Disconnect {
    void operator()(xcb_connection_t *server) const { xcb_disconnect(server); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

// Null when the server says no.
template <typename T, typename Cookie>
[[nodiscard]] Reply<T> replyTo(T *(*get)(xcb_connection_t *, Cookie, xcb_generic_error_t **),
                               xcb_connection_t *server, Cookie asked)
{
    xcb_generic_error_t *error = nullptr;
    Reply<T> reply(get(server, asked, &error));
    std::free(error);
    return reply;
}

// Null when there is none of that number.
[[nodiscard]] const xcb_screen_t *screenOf(xcb_connection_t *server, int number);

struct Window {
    xcb_window_t id = 0;
    QRect whole;  // with its border, from the root's origin
    QPoint inner; // where its shape counts from
};

// Those directly below the root that are mapped and have contents, the lowest first.
[[nodiscard]] std::vector<Window> shownWindows(xcb_connection_t *server, xcb_window_t root);

// The number of the process that a window says to be of; of a frame that a window manager put around another,
// that one's. 0 when it isn't said. Another machine's process may have the same number.
[[nodiscard]] qint64 processOf(xcb_connection_t *server, xcb_window_t window);

} // namespace X11Windows

} // namespace morvane
