#include "persistence/PersistenceError.h"

namespace morvane {

QString PersistenceError::userMessage() const
{
    switch (reason()) {
    case Reason::storeUnavailable:
        return QStringLiteral("Local storage could not be opened.");
    case Reason::saveFailed:
        return QStringLiteral("The conversation could not be saved.");
    }
    return {};
}

std::optional<QString> PersistenceError::recoverySuggestion() const
{
    return QStringLiteral(
        "Restart the app. If the problem persists, use Settings → Privacy → Delete All Local "
        "Data.");
}

} // namespace morvane
