#pragma once

#include <QString>

#include <exception>
#include <optional>

namespace morvane {

// An error with words for the person at the screen. Concrete families are final classes with one case per
// reason.
class UserPresentableError : public std::exception {
public:
    [[nodiscard]] virtual QString userMessage() const = 0;
    [[nodiscard]] virtual std::optional<QString> recoverySuggestion() const { return std::nullopt; }
    [[nodiscard]] virtual bool isRetryable() const = 0;

    // What the other side said about it: one bounded line that is shown as theirs. Empty for nothing.
    [[nodiscard]] virtual QString quotedWords() const { return {}; }

    // For logs of last resort only; people read userMessage().
    [[nodiscard]] const char *what() const noexcept override { return "user-presentable error"; }
};

// What the window shows for an error.
struct ErrorPresentation {
    QString message;
    std::optional<QString> suggestion;
    bool retryable = true;
    QString quotation; // what the server says, as a sentence; empty for nothing

    bool operator==(const ErrorPresentation &) const = default;
};

// The words of any error: its own when it is a UserPresentableError, else a generic sentence that counts as
// retryable.
[[nodiscard]] ErrorPresentation presentationOf(const std::exception_ptr &error);

} // namespace morvane
