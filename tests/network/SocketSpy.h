#pragma once

#include <QByteArray>
#include <QStringList>

#include <semaphore>
#include <vector>

namespace morvane {

// Watches the doors of this process to the network below libcurl: connect(), recv() and the system's
// resolver. Names under ".test" never reach the real resolver: "slow.test" waits for `answer`, every other
// one is unknown. A connection to an address outside this machine and the private ranges is noted and never
// made.
namespace SocketSpy {

[[nodiscard]] int connections(); // connect() calls to an internet address since the process started
[[nodiscard]] int lookups();     // names asked for since the process started, literals not counted

[[nodiscard]] qint64
received(); // bytes that recv() gave since the process started; the scripted server has none

[[nodiscard]] int outsideConnections(); // connect() calls to public addresses since the process started

// What a name leads to from now on: each lookup takes the next answer, and the last one stays.
void setAddresses(const QByteArray &name, const std::vector<QStringList> &answers);

extern std::binary_semaphore slowLookupBegan;
extern std::binary_semaphore slowLookupMayEnd;

} // namespace SocketSpy

} // namespace morvane
