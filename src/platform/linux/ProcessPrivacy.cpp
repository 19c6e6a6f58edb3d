#include "platform/linux/ProcessPrivacy.h"

#include <cstdlib>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace morvane {

namespace {

int pauses = 0; // that live
int former = 0; // what the last of them goes back to

} // namespace

void ProcessPrivacy::keep()
{
    ::unsetenv("SSLKEYLOGFILE");
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
}

ProcessPrivacy::Pause::Pause()
{
    if (pauses++ > 0)
        return;
    former = ::prctl(PR_GET_DUMPABLE);
    ::prctl(PR_SET_DUMPABLE, 1);
}

ProcessPrivacy::Pause::~Pause()
{
    if (--pauses == 0)
        ::prctl(PR_SET_DUMPABLE, former);
}

} // namespace morvane
