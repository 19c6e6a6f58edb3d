#include "persistence/PersistenceError.h"

#include "utils/text/Product.h"

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
    if (Product::hasPrivacyPage)
        return u"Restart the app. If the problem persists, use Settings → Privacy → Delete All Local Data."_s;
    switch (reason().reason) {
    case Reason::storeUnavailable:
        return u"Restart the app. If the problem persists, quit and rename the folder of your chats: the app "
               "then starts with a new one, and the old one stays as it is."_s;
    case Reason::saveFailed:
        return u"Restart the app. If the problem persists, see that the disk has room and that the folder of "
               "your chats can be written."_s;
    }
    return std::nullopt;
}

} // namespace morvane
