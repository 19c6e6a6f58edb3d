#include "documents/extraction/FrameOutput.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace morvane {

void FrameOutput::end(int code)
{
    ::_exit(code);
}

void FrameOutput::send(const QByteArray &frame)
{
    for (qsizetype sent = 0; sent < frame.size();) {
        const ssize_t count = ::write(STDOUT_FILENO, frame.data() + sent, frame.size() - sent);
        if (count < 0 && errno != EINTR)
            end(1);
        sent += std::max<ssize_t>(count, 0);
    }
}

} // namespace morvane
