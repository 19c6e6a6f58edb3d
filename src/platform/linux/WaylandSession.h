#pragma once

#include <wayland-client-core.h>

#include <memory>

namespace morvane {

// The compositor of a Wayland session, by a connection beside the window's.
namespace WaylandSession {

struct Disconnect {
    void operator()(wl_display *display) const { wl_display_disconnect(display); }
};
using Connection = std::unique_ptr<wl_display, Disconnect>;

// While one lives, the library says nothing on stderr of what it misses. One at a time.
class Quiet {
public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet &) = delete;
    Quiet &operator=(const Quiet &) = delete;
};

// The environment says that this is one. An X server that is there as well shows its windows on it, and knows
// of no others.
[[nodiscard]] bool isNamed();

// Null where none answers, or none is named. Doesn't wait.
[[nodiscard]] Connection connect();

// A compositor answers and has neither keyboard nor pointer to give, as when nobody has come to a screen far
// away yet. Waits for its answer.
[[nodiscard]] bool lacksSeat();

} // namespace WaylandSession

} // namespace morvane
