#include "platform/linux/WaylandSession.h"

#include <QByteArray>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <wayland-client-protocol.h>

namespace morvane {

namespace {

void see(void *found, wl_registry *, std::uint32_t, const char *interface, std::uint32_t)
{
    if (std::strcmp(interface, wl_seat_interface.name) == 0)
        *static_cast<bool *>(found) = true;
}

void lose(void *, wl_registry *, std::uint32_t) {}

constexpr wl_registry_listener listener{&see, &lose};

} // namespace

WaylandSession::Quiet::Quiet()
{
    wl_log_set_handler_client([](const char *, va_list) {});
}

WaylandSession::Quiet::~Quiet()
{
    wl_log_set_handler_client([](const char *format, va_list arguments) {
        std::vfprintf(stderr, format, arguments); // as it does by itself
    });
}

bool WaylandSession::isNamed()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
}

WaylandSession::Connection WaylandSession::connect()
{
    return Connection(isNamed() ? wl_display_connect(nullptr) : nullptr);
}

bool WaylandSession::lacksSeat()
{
    const Connection display = connect();
    if (!display)
        return false;
    bool found = false;
    wl_registry *const registry = wl_display_get_registry(display.get());
    wl_registry_add_listener(registry, &listener, &found);
    const bool answered = wl_display_roundtrip(display.get()) >= 0;
    wl_registry_destroy(registry);
    return answered && !found;
}

} // namespace morvane
