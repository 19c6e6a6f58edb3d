#pragma once

#include <QLatin1StringView>

namespace morvane {

// One step of a verification: what it claims, and the code that throws unless the claim holds. A verifier is
// a row of checks in their binding order, so a program that explains a proof shows the very steps that run.
//
// `Inquiry` holds what is asked and what the checks so far have found, so each may rely on those before it.
template <typename Inquiry>
struct Check {
    QLatin1StringView claim;
    void (*require)(Inquiry &);
};

} // namespace morvane
