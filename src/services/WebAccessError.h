#pragma once

#include "utils/text/ErrorFamily.h"

#include <variant>

namespace morvane {

// Why the web could not be searched or read. The cases carry what their words need.
struct WebAccessErrorCases {
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
};

class WebAccessError final : public ErrorFamily<WebAccessErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;
};

} // namespace morvane
