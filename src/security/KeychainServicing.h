#pragma once

#include <QString>

#include <optional>
#include <stop_token>

namespace morvane {

// Whether an item is handed out only to someone who shows that they are there.
enum class UserPresence { NotRequired, Required };

// The system's secrets: short texts, one account each, under one service name. Any thread may call.
//
// Every call is synchronous. A value that was read or saved before is answered from memory; anything else may
// wait for another process, so the first use belongs off the GUI thread. Failures are thrown as
// KeychainError, except where a call says otherwise.
class KeychainServicing {
public:
    virtual ~KeychainServicing() = default;

    // An item behind user presence stays behind it.
    virtual void save(const QString &value, const QString &account) = 0;

    // Nothing when there is no such item. Never prompts: an item that would take a prompt throws
    // InteractionNotAllowed.
    [[nodiscard]] virtual std::optional<QString> read(const QString &account) = 0;

    // A missing item counts as removed.
    virtual void remove(const QString &account) = 0;

    // Removes what it can, items under former service names included, and tells how many went.
    virtual int deleteAll() noexcept = 0;

    // May prompt, with `reason` in the prompt's words, and waits for the answer: never on the GUI thread.
    // Triggering `stop` takes the prompt away; the call then throws CancelledError or KeychainError.
    [[nodiscard]] virtual std::optional<QString> read(const QString &account, const QString &reason,
                                                      std::stop_token stop) = 0;

    // Stores the item anew with or without the presence rule. When that fails the item is put back as it was
    // before, and the failure is thrown.
    virtual void setUserPresence(const QString &value, const QString &account, UserPresence presence) = 0;

    // Never prompts and never throws; false for a missing item.
    [[nodiscard]] virtual bool requiresUserPresence(const QString &account) noexcept = 0;

    // Forgets the values held in memory.
    virtual void clearCache() = 0;
};

} // namespace morvane
