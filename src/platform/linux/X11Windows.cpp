#include "platform/linux/X11Windows.h"

#include <QByteArray>

#include <cstring>
#include <deque>

namespace morvane {

using namespace X11Windows;

namespace {

constexpr std::size_t mostLookedAt = 64; // below one frame, which has a handful

xcb_atom_t atomOf(xcb_connection_t *server, const QByteArray &name)
{
    const auto reply = replyTo(&xcb_intern_atom_reply, server,
                               xcb_intern_atom(server, 1, std::uint16_t(name.size()), name.constData()));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

QByteArray property(xcb_connection_t *server, xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
{
    constexpr std::uint32_t mostWords = 64;
    const auto reply = replyTo(&xcb_get_property_reply, server,
                               xcb_get_property(server, 0, window, name, type, 0, mostWords));
    if (!reply || reply->type != type)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

std::vector<xcb_window_t> childrenOf(xcb_connection_t *server, xcb_window_t window)
{
    const auto tree = replyTo(&xcb_query_tree_reply, server, xcb_query_tree(server, window));
    if (!tree)
        return {};
    const xcb_window_t *first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

// The one that a program made; those above it are frames.
xcb_window_t clientIn(xcb_connection_t *server, xcb_window_t window)
{
    std::deque<xcb_window_t> waiting{window};
    for (std::size_t looked = 0; !waiting.empty() && looked < mostLookedAt; ++looked) {
        const xcb_window_t next = waiting.front();
        waiting.pop_front();
        if (!property(server, next, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).isEmpty())
            return next;
        const auto children = childrenOf(server, next);
        waiting.insert(waiting.end(), children.begin(), children.end());
    }
    return window;
}

} // namespace

const xcb_screen_t *X11Windows::screenOf(xcb_connection_t *server, int number)
{
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(server)); each.rem > 0; xcb_screen_next(&each)) {
        if (number-- == 0)
            return each.data;
    }
    return nullptr;
}

std::vector<Window> X11Windows::shownWindows(xcb_connection_t *server, xcb_window_t root)
{
    std::vector<Window> windows;
    for (const xcb_window_t id : childrenOf(server, root)) {
        const auto about =
            replyTo(&xcb_get_window_attributes_reply, server, xcb_get_window_attributes(server, id));
        const auto place = replyTo(&xcb_get_geometry_reply, server, xcb_get_geometry(server, id));
        if (!about || !place || about->map_state != XCB_MAP_STATE_VIEWABLE ||
            about->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            continue;
        const int border = place->border_width;
        windows.push_back(
            {.id = id,
             .whole = {place->x, place->y, place->width + 2 * border, place->height + 2 * border},
             .inner = {place->x + border, place->y + border}});
    }
    return windows;
}

qint64 X11Windows::processOf(xcb_connection_t *server, xcb_window_t window)
{
    const xcb_window_t client = clientIn(server, window);
    const QByteArray number = property(server, client, atomOf(server, "_NET_WM_PID"), XCB_ATOM_CARDINAL);
    std::uint32_t process = 0;
    if (number.size() == qsizetype{sizeof process})
        std::memcpy(&process, number.constData(), sizeof process);
    return process;
}

} // namespace morvane
