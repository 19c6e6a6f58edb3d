#pragma once

#include "ai/contract/AIStreamEvent.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/LineSplitter.h"
#include "ai/providers/ReplyLines.h"
#include "async/AsyncStream.h"
#include "fuzz/Fuzz.h"

namespace morvane {

// A reply's body in pieces of a size: whatever a server sends, its lines and events must come out without a
// crash and within the limits. `Reply` takes lines as a ReplyLines::Reader does.
template <typename Reply>
QByteArray textOf(Reply &reply, QByteArrayView body, qsizetype pieceSize)
{
    auto [stream, events] = AsyncStream<AIStreamEvent>::make();
    try {
        LineSplitter lines(4096);
        auto progress = ReplyLines::Progress::goesOn;
        for (qsizetype at = 0; at < body.size() && progress == ReplyLines::Progress::goesOn;
             at += pieceSize) {
            lines.add(body.sliced(at, std::min(pieceSize, body.size() - at)).toByteArray());
            while (progress ==
                   ReplyLines::Progress::goesOn) { // what stands behind the end isn't cut any more
                const auto line = lines.next();
                if (!line)
                    break;
                progress = reply.add(*line, events);
            }
        }
        if (const auto line = lines.last(); line && progress == ReplyLines::Progress::goesOn)
            reply.add(*line, events);
        reply.finish(events);
        if constexpr (requires { reply.plainBody(); })
            static_cast<void>(reply.plainBody());
    } catch (const ProviderError &) {
        return "refused";
    }
    QByteArray text;
    while (const auto event = stream.takeBuffered()) {
        if (const auto *piece = std::get_if<AIStream::Text>(&*event))
            text += piece->piece.toUtf8();
    }
    return text;
}

// Where the network cuts must not matter.
template <typename Reply>
void fuzzReply(QByteArrayView input)
{
    Reply cut;
    Reply whole;
    if (!input.isEmpty())
        require(textOf(cut, input, 1 + static_cast<uchar>(input[0]) % 16) ==
                textOf(whole, input, input.size()));
}

} // namespace morvane
