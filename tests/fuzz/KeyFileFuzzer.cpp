#include "security/KeyFileFormat.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

// A key file that something else wrote: whatever is accepted prints to a file that reads the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    if (const auto entries = KeyFileFormat::parse(bytes)) {
        if (KeyFileFormat::parse(KeyFileFormat::print(*entries)) != entries)
            std::abort();
    }
    return 0;
}

} // namespace morvane
