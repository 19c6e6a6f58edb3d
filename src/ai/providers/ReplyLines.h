#pragma once

#include "network/HttpSession.h"

#include <QCoroTask>

#include <functional>
#include <stop_token>

namespace morvane {

// The lines of a streamed reply, handed to its reader as they arrive.
namespace ReplyLines {

// Bytes of one line. Far beyond any reply; the costliest JSON of this size takes some 90 MB and a sixth of a
// second to parse.
inline constexpr qsizetype longest = qsizetype{2} * 1024 * 1024;

enum class Progress { goesOn, done };

// Takes one line without its end.
using Reader = std::function<Progress(QByteArrayView line)>;

// Returns when the reader is done or the body is over; the last line needs no line end. Throws CancelledError
// once `stop` is triggered, TransportError when the connection breaks, ProviderError::replyTooLarge for a
// line past `longest`, and what the reader throws.
[[nodiscard]] QCoro::Task<> read(HttpResponse response, Reader reader, std::stop_token stop);

} // namespace ReplyLines

} // namespace morvane
