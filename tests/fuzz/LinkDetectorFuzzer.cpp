// Whatever a person pastes: links stand in order inside the text, and each is an address.

#include "utils/text/LinkDetector.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    qsizetype end = 0;
    for (const LinkDetector::Link &link : LinkDetector::find(text)) {
        if (link.start < end || link.length < 1 || link.start + link.length > text.size())
            std::abort();
        if (!link.url.isValid() || link.url.isRelative())
            std::abort();
        end = link.start + link.length;
    }
    return 0;
}

} // namespace morvane
