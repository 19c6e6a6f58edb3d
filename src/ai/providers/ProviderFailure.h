#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/contract/ProviderError.h"
#include "network/HttpSession.h"

#include <exception>
#include <stop_token>

namespace morvane {

// From what went wrong on the way to a server to the provider's error for it.
namespace ProviderFailure {

// The body of an error response is read up to here.
inline constexpr qsizetype errorBodyLimit = 0x10000;

// Every error that leaves a provider: cancellation, transport errors and the rest as a ProviderError.
[[nodiscard]] ProviderError mapped(const std::exception_ptr &error);

// What a trial tells that ended so. A few tokens may all be spent on thinking: the model is there and
// answers. Throws any other failure, mapped.
[[nodiscard]] ReplyTrial trialEndedBy(const std::exception_ptr &error);

// Returns the response untouched when its status is 200 to 299; else reads its body and throws the
// ProviderError for it, with the server's words.
[[nodiscard]] QCoro::Task<HttpResponse> validated(HttpResponse response, std::stop_token stop);

// The start of a body, up to `limit` bytes. A connection that breaks here is just its end.
[[nodiscard]] QCoro::Task<QByteArray> readStart(HttpResponse response, qsizetype limit, std::stop_token stop);

[[nodiscard]] constexpr bool isSuccess(int status)
{
    return status >= 200 && status <= 299;
}

} // namespace ProviderFailure

} // namespace morvane
