#pragma once

#include "security/KeychainError.h"
#include "security/KeychainServicing.h"

#include <QByteArray>
#include <QString>

#include <exception>
#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

// Why a place for secrets refused.
class SecretStoreError final : public std::exception {
public:
    explicit SecretStoreError(KeychainStatus status)
        : m_status(status)
    {}

    [[nodiscard]] KeychainStatus status() const { return m_status; }
    [[nodiscard]] const char *what() const noexcept override { return "the secret store refused"; }

private:
    KeychainStatus m_status;
};

// A place where secrets stand: the desktop's keyring or a file. Items are known by service and account. It
// keeps the presence mark but does not enforce it; KeychainService does.
//
// Any thread. Calls may wait for another process and never prompt, except unlock(). Throws SecretStoreError:
// InteractionNotAllowed when the place is locked, NotAvailable when there is none, InputOutput when it broke
// or did not answer in time.
class SecretStoring {
public:
    enum class Condition { Open, Locked, Absent };

    struct Item {
        QString account;
        QByteArray value; // wiped by whoever takes it out
        UserPresence presence = UserPresence::NotRequired;
    };

    virtual ~SecretStoring() = default;

    // As far as the items of `service`, and room for new ones, are concerned.
    [[nodiscard]] virtual Condition condition(const QString &service) = 0;

    // Waits for the person at the desktop's own prompt. Throws UserCancelled when they dismiss it and
    // CancelledError once `stop` is triggered.
    virtual void unlock(const QString &service, std::stop_token stop) = 0;

    [[nodiscard]] virtual std::optional<Item> find(const QString &service, const QString &account) = 0;
    [[nodiscard]] virtual std::vector<Item> items(const QString &service) = 0;
    virtual void add(const QString &service, const Item &item) = 0;

    // Gives a present item another value and keeps its mark; false when there is none.
    virtual bool update(const QString &service, const QString &account, const QByteArray &value) = 0;
    // False when there was none.
    virtual bool remove(const QString &service, const QString &account) = 0;

    // Removes what a place that is not in use still holds of the service; true when anything went.
    virtual bool removeElsewhere(const QString &) { return false; }

    // Whether items can carry the presence mark here.
    [[nodiscard]] virtual bool keepsPresence() const = 0;
};

} // namespace morvane
