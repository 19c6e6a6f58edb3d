#include "fuzz/ReplyFuzzing.h"

#include "ai/providers/OllamaReply.h"

namespace morvane {

void fuzz(QByteArrayView input)
{
    ReplyFuzzing::check<OllamaReply>(input);
}

} // namespace morvane
