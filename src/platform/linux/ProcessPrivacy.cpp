#include "platform/linux/ProcessPrivacy.h"

#include <cstdlib>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace morvane {

void ProcessPrivacy::keep()
{
    ::unsetenv("SSLKEYLOGFILE");
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
}

ProcessPrivacy::Pause::Pause()
    : m_former(::prctl(PR_GET_DUMPABLE))
{
    ::prctl(PR_SET_DUMPABLE, 1);
}

ProcessPrivacy::Pause::~Pause()
{
    ::prctl(PR_SET_DUMPABLE, m_former);
}

} // namespace morvane
