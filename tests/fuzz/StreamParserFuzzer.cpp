#include "fuzz/ReplyFuzzing.h"

#include "ai/providers/StreamedReply.h"

void morvane::fuzz(QByteArrayView input)
{
    fuzzReply<StreamedReply>(input);
}
