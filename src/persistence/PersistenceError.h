#pragma once

#include "utils/text/ErrorFamily.h"

namespace morvane {

struct PersistenceErrorCases {
    enum class Reason { storeUnavailable, saveFailed };
    enum class Cause {
        store,        // its files, or the disk
        otherProcess, // has it open; the store is none the worse for that
    };
    struct Case {
        Reason reason;
        Cause cause = Cause::store;

        bool operator==(const Case &) const = default;
    };
};

class PersistenceError final : public ErrorFamily<PersistenceErrorCases> {
public:
    explicit PersistenceError(Reason reason, Cause cause = Cause::store)
        : ErrorFamily(Case{reason, cause})
    {}

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override { return reason().reason == Reason::saveFailed; }
};

} // namespace morvane
