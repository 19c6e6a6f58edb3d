// A reply in Ollama's own interface, in pieces of every size: whatever a server sends, its lines and events
// must come out without a crash and within the limits.

#include "ai/contract/ProviderError.h"
#include "ai/providers/LineSplitter.h"
#include "ai/providers/OllamaReply.h"

#include <cstdint>
#include <cstdlib>

namespace morvane {

namespace {

constexpr qsizetype longestLine = 4096;

QByteArray textOf(AsyncStream<AIStreamEvent> &stream)
{
    QByteArray text;
    while (const auto event = stream.takeBuffered()) {
        if (const auto *piece = std::get_if<AIStream::Text>(&*event))
            text += piece->piece.toUtf8();
    }
    return text;
}

QByteArray read(const QByteArray &body, qsizetype pieceSize)
{
    auto [stream, events] = AsyncStream<AIStreamEvent>::make();
    OllamaReply reply;
    try {
        LineSplitter lines(longestLine);
        auto progress = ReplyLines::Progress::goesOn;
        for (qsizetype at = 0; at < body.size() && progress == ReplyLines::Progress::goesOn;
             at += pieceSize) {
            lines.add(body.mid(at, pieceSize));
            while (const auto line = lines.next()) {
                progress = reply.add(*line, events);
                if (progress == ReplyLines::Progress::done)
                    break;
            }
        }
        if (const auto line = lines.last(); line && progress == ReplyLines::Progress::goesOn)
            reply.add(*line, events);
        reply.finish(events);
    } catch (const ProviderError &) {
        return "refused";
    }
    return textOf(stream);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray body(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    // Where the network cuts must not matter.
    if (read(body, 1 + data[0] % 16) != read(body, body.size()))
        std::abort();
    return 0;
}

} // namespace morvane
