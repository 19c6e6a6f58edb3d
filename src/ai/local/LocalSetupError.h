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

    [[nodiscard]] QString userMessage() const override { return m_userMessage; }
    [[nodiscard]] bool isRetryable() const override { return true; }

private:
    QString m_userMessage;
};

} // namespace morvane
