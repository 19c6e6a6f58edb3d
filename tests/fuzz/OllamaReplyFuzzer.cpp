#include "fuzz/ReplyFuzzing.h"

#include "ai/providers/OllamaReply.h"

void morvane::fuzz(QByteArrayView input)
{
    fuzzReply<OllamaReply>(input);
}
