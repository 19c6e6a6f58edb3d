#include "security/KeychainError.h"

#include "utils/text/DesktopWords.h"

namespace morvane {

using namespace Qt::StringLiterals;

KeychainError::KeychainError(Operation operation, KeychainStatus status)
    : m_operation(operation)
    , m_status(status)
{}

QString KeychainError::userMessage() const
{
    const QStringView store = DesktopWords::here().secretStore;
    switch (m_operation) {
    case Operation::Save:
        return u"The API key could not be saved to the %1."_s.arg(store);
    case Operation::Read:
        return u"The API key could not be read from the %1."_s.arg(store);
    case Operation::Delete:
        return u"The API key could not be removed from the %1."_s.arg(store);
    }
    return {};
}

std::optional<QString> KeychainError::recoverySuggestion() const
{
    const DesktopWords &desktop = DesktopWords::here();
    return u"Try again. If the problem persists, check %1 for a locked or damaged %2."_s.arg(
        desktop.secretStoreProgram, desktop.secretStore.toString().toLower());
}

} // namespace morvane
