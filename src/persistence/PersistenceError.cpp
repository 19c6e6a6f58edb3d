#include "persistence/PersistenceError.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString PersistenceError::userMessage() const
{
    switch (reason().reason) {
    case Reason::storeUnavailable:
        return u"Local storage could not be opened."_s;
    case Reason::saveFailed:
        return u"The conversation could not be saved."_s;
    }
    return {};
}

// Deleting data is no advice while all that is wrong is that another process has the store.
std::optional<QString> PersistenceError::recoverySuggestion() const
{
    if (reason().cause == Cause::otherProcess)
        return u"Another program has your chats open. Close it and try again."_s;
    return u"Restart the app. If the problem persists, use Settings → Privacy → Delete All Local Data."_s;
}

} // namespace morvane
