#include "fuzz/Fuzz.h"

#include "security/KeyFileFormat.h"

// A key file that something else wrote: whatever is accepted prints to a file that reads the same.
void morvane::fuzz(QByteArrayView input)
{
    const auto entries = KeyFileFormat::parse(input);
    require(!entries || KeyFileFormat::parse(KeyFileFormat::print(*entries)) == entries);
}
