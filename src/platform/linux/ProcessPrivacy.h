#pragma once

namespace morvane {

// What the process holds in memory stays in it: no core file is left when it crashes, no other program of the
// account may look into it, and the keys of encrypted connections are written nowhere, whatever the
// environment asks for.
namespace ProcessPrivacy {

// The first thing a program does: libraries read the environment as they start.
void keep();

// While one lives, other programs of the account may look at the process again. A desktop portal has to, once
// for each connection to the bus: it refuses every request of a program that it can't tell the kind of.
// Core files stay off. GUI thread.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;
};

} // namespace ProcessPrivacy

} // namespace morvane
