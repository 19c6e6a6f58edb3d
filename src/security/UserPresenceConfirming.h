#pragma once

#include <QString>

#include <stop_token>

namespace morvane {

// Asks the person at the machine to show that they are there: a fingerprint, the login password.
class UserPresenceConfirming {
public:
    enum class Answer {
        Confirmed,
        Refused, // a wrong answer, or one that the machine's rules don't take
        Dismissed,
        Unavailable,
    };

    virtual ~UserPresenceConfirming() = default;

    // Whether this machine has anything to ask with. Any thread.
    [[nodiscard]] virtual bool canConfirm() const = 0;

    // Prompts and waits; `reason` completes "… is trying to". Never on the GUI thread.
    [[nodiscard]] virtual Answer confirm(const QString &reason, std::stop_token stop) = 0;
};

} // namespace morvane
