#pragma once

namespace morvane {

// Gives up what reading a hostile file never needs, before its first byte is read. What was given up can't be
// had back.
namespace Confinement {

// Memory, time and size limits; no files but the standard streams; no core file; the end of the one who
// started this process is its end, too. Where the system lets an ordinary program do so, a network of its own
// with nothing in it. Before the first thread.
void limit();

// From here on the process can't open or change files, make sockets or processes, or run what isn't loaded:
// the system answers such calls with an error (seccomp). Holds for all threads, those that come included.
// False when the system won't, and nothing may be read then.
[[nodiscard]] bool seal();

} // namespace Confinement

} // namespace morvane
