#include "fuzz/Fuzz.h"

#include "memory/MemoryFile.h"

// A notes file that something else wrote: the notes read from it are the notes read again once this program
// has written them.
void morvane::fuzz(QByteArrayView input)
{
    const auto notes = MemoryFile::notes(input);
    if (!notes)
        return;
    const auto again = MemoryFile::notes(MemoryFile::compose(*notes));
    require(again && again->size() == notes->size() &&
            MemoryFile::compose(*again) == MemoryFile::compose(*notes));
}
