#pragma once

#include "security/SecretStoring.h"
#include "security/UserPresenceConfirming.h"

namespace morvane {

// Stands where there is no keyring to be used: a trial profile must never read or change the person's own.
class AbsentKeyring final : public SecretStoring {
public:
    [[nodiscard]] Condition condition(const QString &) override { return Condition::Absent; }
    void unlock(const QString &, std::stop_token) override { refuse(); }
    [[nodiscard]] std::optional<Item> find(const QString &, const QString &) override { refuse(); }
    [[nodiscard]] std::vector<Item> items(const QString &) override { refuse(); }
    void add(const QString &, const Item &) override { refuse(); }
    bool update(const QString &, const QString &, const QByteArray &) override { refuse(); }
    bool remove(const QString &, const QString &) override { refuse(); }
    [[nodiscard]] bool keepsPresence() const override { return false; }

private:
    [[noreturn]] static void refuse() { throw SecretStoreError(KeychainStatus::NotAvailable); }
};

// Stands where nothing can ask the person whether they are there.
class AbsentPresence final : public UserPresenceConfirming {
public:
    [[nodiscard]] bool canConfirm() const override { return false; }
    [[nodiscard]] Answer confirm(const QString &, std::stop_token) override { return Answer::Unavailable; }
};

} // namespace morvane
