#pragma once

#include "utils/text/UserPresentableError.h"

namespace morvane {

class PersistenceError final : public UserPresentableError {
public:
    enum class Reason { storeUnavailable, saveFailed };

    explicit PersistenceError(Reason reason)
        : m_reason(reason)
    {}

    [[nodiscard]] Reason reason() const { return m_reason; }
    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override { return m_reason == Reason::saveFailed; }

private:
    Reason m_reason;
};

} // namespace morvane
