#pragma once

#include "utils/text/UserPresentableError.h"

#include <utility>

namespace morvane {

// The errors of one family. `Cases` names them: it holds the type `Case`, an enumeration or a variant of what
// the cases carry, and whatever that is made of.
template <typename Cases>
class ErrorFamily : public UserPresentableError, public Cases {
public:
    using typename Cases::Case;

    ErrorFamily(Case reason)
        : m_case(std::move(reason))
    {}

    [[nodiscard]] const Case &reason() const { return m_case; }

    // Whether it is this case, with the same payload if it has one.
    [[nodiscard]] bool is(const Case &reason) const { return m_case == reason; }

    bool operator==(const ErrorFamily &other) const { return m_case == other.m_case; }

private:
    Case m_case;
};

} // namespace morvane
