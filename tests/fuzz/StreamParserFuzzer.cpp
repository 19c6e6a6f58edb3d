#include "fuzz/ReplyFuzzing.h"

#include "ai/providers/StreamedReply.h"

namespace morvane {

void fuzz(QByteArrayView input)
{
    ReplyFuzzing::check<StreamedReply>(input);
}

} // namespace morvane
