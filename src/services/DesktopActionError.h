#pragma once

#include "utils/text/ErrorFamily.h"

#include <QStringList>

#include <variant>

namespace morvane {

// Why something was not done on the desktop. The cases carry what their words need.
struct DesktopActionErrorCases {
    struct DisallowedScheme {
        QString scheme; // in lower case; empty for an address without one
        bool operator==(const DisallowedScheme &) const = default;
    };
    struct ShortcutNotFound {
        QString name;
        QStringList available;
        bool operator==(const ShortcutNotFound &) const = default;
    };
    struct ShortcutTimedOut {
        QString name;
        bool operator==(const ShortcutTimedOut &) const = default;
    };
    // Somebody else may have written what would run.
    struct ShortcutRefused {
        enum class Why { leadsOut, othersMayWriteIt, othersMayWriteTheFolder };
        QString name;
        Why why;
        bool operator==(const ShortcutRefused &) const = default;
    };
    enum class Plain {
        shortcutsUnavailable,
        shortcutFailed,
        invalidURL,
        openFailed,
        openDismissed, // the desktop asked which program to use, and got no answer
        calendarAccessDenied,
        calendarUnavailable,
        calendarSaveFailed,
        calendarEventInvalid,
        calendarEventInPast,
    };
    using Case = std::variant<DisallowedScheme, ShortcutNotFound, ShortcutTimedOut, ShortcutRefused, Plain>;
};

class DesktopActionError final : public ErrorFamily<DesktopActionErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override { return false; }
};

} // namespace morvane
