#include "security/KeychainError.h"

namespace morvane {

using namespace Qt::StringLiterals;

KeychainError::KeychainError(Operation operation, KeychainStatus status)
    : m_operation(operation)
    , m_status(status)
{}

QString KeychainError::userMessage() const
{
    switch (m_operation) {
    case Operation::Save:
        return u"The API key could not be saved to the Keychain."_s;
    case Operation::Read:
        return u"The API key could not be read from the Keychain."_s;
    case Operation::Delete:
        return u"The API key could not be removed from the Keychain."_s;
    }
    return {};
}

std::optional<QString> KeychainError::recoverySuggestion() const
{
    return u"Try again. If the problem persists, check Keychain Access for a locked or damaged keychain."_s;
}

} // namespace morvane
