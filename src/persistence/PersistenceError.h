#pragma once

#include "utils/text/ErrorFamily.h"

namespace morvane {

struct PersistenceErrorCases {
    enum class Reason { storeUnavailable, saveFailed };
    using Case = Reason;
};

class PersistenceError final : public ErrorFamily<PersistenceErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override { return is(Reason::saveFailed); }
};

} // namespace morvane
