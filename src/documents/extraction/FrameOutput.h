#pragma once

#include <QByteArray>

namespace morvane {

// What a process that reads hostile things does with its standard output, and at its end.
namespace FrameOutput {

// Ends the process, and leaves nothing to tidy up and a broken heap alone.
[[noreturn]] void end(int code);

// Writes the whole frame, or ends the process with 1 where nobody listens.
void send(const QByteArray &frame);

} // namespace FrameOutput

} // namespace morvane
