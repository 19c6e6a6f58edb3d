#pragma once

#include "security/UserPresenceConfirming.h"

#include <chrono>

namespace morvane {

// Asks through polkit, whose agent on this session shows the prompt and takes what the machine's rules allow:
// the login password, a fingerprint. The action is this program's own and is installed with it. The answer
// comes over the system's bus, which only polkit's own account can answer on by that name.
//
// Any thread; both calls wait.
class PolkitPresence final : public UserPresenceConfirming {
public:
    // A prompt that nobody answers ends after `patience`.
    explicit PolkitPresence(std::chrono::milliseconds patience = std::chrono::minutes(5));

    // Whether polkit knows the action and an agent is there to ask. polkit can't be asked for the second:
    // it is known from its refusal of a second agent.
    [[nodiscard]] bool canConfirm() const override;
    // The prompt's words stand with the action.
    [[nodiscard]] Answer confirm(const QString &reason, std::stop_token stop) override;

private:
    const std::chrono::milliseconds m_patience;
};

} // namespace morvane
