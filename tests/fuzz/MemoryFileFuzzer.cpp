#include "memory/MemoryFile.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

// A notes file that something else wrote: the notes read from it are the notes read again once this program
// has written them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto notes = MemoryFile::notes(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (!notes)
        return 0;
    const auto again = MemoryFile::notes(MemoryFile::compose(*notes));
    if (!again || again->size() != notes->size() ||
        MemoryFile::compose(*again) != MemoryFile::compose(*notes))
        std::abort();
    return 0;
}

} // namespace morvane
