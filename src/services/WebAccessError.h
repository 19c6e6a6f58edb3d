#pragma once

#include "utils/text/UserPresentableError.h"

#include <variant>

namespace morvane {

// Why the web could not be searched or read. The cases carry what their words need.
class WebAccessError final : public UserPresentableError {
public:
    struct FetchFailed {
        int statusCode;
        bool operator==(const FetchFailed &) const = default;
    };
    struct BlockedByBotProtection {
        QString host;
        bool operator==(const BlockedByBotProtection &) const = default;
    };
    enum class Plain {
        emptyQuery,
        searchNotConfigured,
        searchKeyRejected,
        searchFailed,
        builtInSearchUnavailable,
        invalidURL,
        insecureURL,
        privateAddress,
        pageTooLarge,
        unreadablePage,
        offline,
        cancelled, // shows no text
    };
    using Case = std::variant<FetchFailed, BlockedByBotProtection, Plain>;

    WebAccessError(Case reason)
        : m_case(std::move(reason))
    {}

    [[nodiscard]] const Case &reason() const { return m_case; }
    [[nodiscard]] bool is(Plain plain) const { return m_case == Case(plain); }

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;

    bool operator==(const WebAccessError &other) const { return m_case == other.m_case; }

private:
    Case m_case;
};

} // namespace morvane
