#pragma once

#include "security/SecretStoring.h"

namespace morvane {

// The desktop's keyring, reached over the session bus by the Secret Service protocol.
//
// Any thread; each call opens its own session with the service and ends it, so a keyring that is restarted,
// locked or unlocked from outside is seen as it is now. About ten milliseconds when it is well.
class SecretServiceKeyring final : public SecretStoring {
public:
    // Absent also covers a machine without a session bus. Locked also covers a keyring that was never made:
    // the desktop asks for its first password.
    [[nodiscard]] Condition condition(const QString &service) override;
    void unlock(const QString &service, std::stop_token stop) override;
    [[nodiscard]] std::optional<Item> find(const QString &service, const QString &account) override;
    [[nodiscard]] std::vector<Item> items(const QString &service) override;
    // Takes the place of an item of the same account, which goes only when the new one is stored.
    void add(const QString &service, const Item &item) override;
    bool update(const QString &service, const QString &account, const QByteArray &value) override;
    bool remove(const QString &service, const QString &account) override;
    [[nodiscard]] bool keepsPresence() const override { return true; }
};

} // namespace morvane
