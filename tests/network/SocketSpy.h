#pragma once

#include <QByteArray>

#include <semaphore>

// Watches the doors of this process to the network below libcurl: connect(), recv() and the system's
// resolver. Names under ".test" never reach the real resolver: "slow.test" waits for `answer`, every other
// one is unknown.
namespace SocketSpy {

[[nodiscard]] int connections(); // connect() calls to an internet address since the process started
[[nodiscard]] int lookups();     // names asked for since the process started, literals not counted

[[nodiscard]] qint64
received(); // bytes that recv() gave since the process started; the scripted server has none

extern std::binary_semaphore slowLookupBegan;
extern std::binary_semaphore slowLookupMayEnd;

} // namespace SocketSpy
