#include "services/LiteralPatterns.h"
#include "services/PageText.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

// Any bytes as a page: what the scanners read is what the patterns read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString html =
        PageText::decoded({reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)});
    const QString title = PageText::title(html);
    const QString text = PageText::text(html);
    static_cast<void>(PageText::isBotWall(title, text));
    constexpr qsizetype comparable = 4096; // longer ones may hit the matcher's own limits
    if (html.size() <= comparable &&
        (title != LiteralPatterns::title(html) || text != LiteralPatterns::text(html)))
        std::abort();
    return 0;
}

} // namespace morvane
