#pragma once

#include "network/HttpSession.h"

namespace morvane {

// What a redirect response asks for. Pure.
namespace Redirect {

// Hops that one request may be sent on.
inline constexpr int limit = 20;

// Where the response points, made absolute against `base`; nothing when it is no redirect. An address that
// can't be read comes back invalid, for the gate to refuse.
[[nodiscard]] std::optional<QUrl> target(int status, const std::vector<HttpHeader> &headers,
                                         const QUrl &base);

// The request for the next hop. 301 and 302 turn POST into GET, 303 every method but HEAD; the body then
// stays behind. Another origin (scheme, host or port) gets only the headers that describe what is wanted:
// any other one may be a credential.
[[nodiscard]] HttpRequest following(HttpRequest request, int status, const QUrl &target);

} // namespace Redirect

} // namespace morvane
