#pragma once

#include "utils/text/UserPresentableError.h"

#include <QString>

#include <utility>

namespace morvane {

// Why local AI could not be set up, in words for the person.
class LocalSetupError final : public UserPresentableError {
public:
    explicit LocalSetupError(QString userMessage)
        : m_userMessage(std::move(userMessage))
    {}

    // Those that more than one step, or a window before any step, has to tell.
    [[nodiscard]] static LocalSetupError unavailable(); // no runtime is published for this kind of machine
    [[nodiscard]] static LocalSetupError noRoom();      // not even for the smallest model
    [[nodiscard]] static LocalSetupError swapped();     // the installed runtime, which is gone now
    [[nodiscard]] static LocalSetupError keyMissing();  // of a server that isn't ours

    [[nodiscard]] QString userMessage() const override { return m_userMessage; }
    [[nodiscard]] bool isRetryable() const override { return true; }

private:
    QString m_userMessage;
};

} // namespace morvane
