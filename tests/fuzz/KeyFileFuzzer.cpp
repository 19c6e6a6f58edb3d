#include "fuzz/Fuzz.h"

#include "security/KeyFileFormat.h"

namespace morvane {

// A key file that something else wrote: whatever is accepted prints to a file that reads the same.
void fuzz(QByteArrayView input)
{
    const auto entries = KeyFileFormat::parse(input);
    require(!entries || KeyFileFormat::parse(KeyFileFormat::print(*entries)) == entries);
}

} // namespace morvane
