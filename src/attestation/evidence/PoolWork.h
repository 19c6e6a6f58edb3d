#pragma once

#include <cstddef>
#include <functional>

namespace morvane {

// Independent pieces of work spread over the global thread pool.
namespace PoolWork {

// Calls `work` once for each index below `count`, lowest first, and returns when all are done. The calling
// thread takes part and never waits for a pool thread to become free, so calls may nest. `work` runs on
// several threads at once and must not throw.
void forEach(std::size_t count, const std::function<void(std::size_t)> &work);

} // namespace PoolWork

} // namespace morvane
