#include "security/KeychainService.h"

#include "security/FormerServices.h"
#include "security/KeychainError.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Operation = KeychainError::Operation;

int number(KeychainStatus status)
{
    return static_cast<int>(status);
}

[[noreturn]] void failReading(KeychainStatus status)
{
    if (status == KeychainStatus::InteractionNotAllowed || status == KeychainStatus::AuthenticationFailed) {
        Log::info(Log::Category::App, "A stored secret is behind Touch ID and was not read (%d)"_L1,
                  {number(status)});
    } else {
        Log::error(Log::Category::App, "Keychain read failed: %d"_L1, {number(status)});
    }
    throw KeychainError(Operation::Read, status);
}

[[noreturn]] void fail(Operation operation, QLatin1StringView line, KeychainStatus status)
{
    Log::error(Log::Category::App, line, {number(status)});
    throw KeychainError(operation, status);
}

// UTF-8 of a secret, wiped when it has been used.
class SecretUtf8 {
public:
    explicit SecretUtf8(const QString &text)
        : bytes(text.toUtf8())
    {}
    ~SecretUtf8() { wipe(bytes); }
    SecretUtf8(const SecretUtf8 &) = delete;
    SecretUtf8 &operator=(const SecretUtf8 &) = delete;

    QByteArray bytes;
};

std::optional<QString> textOf(SecretStoring::Item &item)
{
    auto text = Text::fromUtf8(item.value);
    wipe(item.value);
    return text;
}

} // namespace

KeychainService::KeychainService(QString service, SecretStoring &store, UserPresenceConfirming &presence)
    : m_service(std::move(service))
    , m_store(store)
    , m_presence(presence)
{}

void KeychainService::save(const QString &value, const QString &account)
{
    const SecretUtf8 secret(value);
    bool updated = false;
    try {
        updated = m_store.update(m_service, account, secret.bytes);
    } catch (const SecretStoreError &error) {
        fail(Operation::Save, "Keychain update failed: %d"_L1, error.status());
    }
    try {
        if (!updated)
            m_store.add(m_service, {account, secret.bytes});
    } catch (const SecretStoreError &error) {
        fail(Operation::Save, "Keychain add failed: %d"_L1, error.status());
    }
    remember(account, value);
}

std::optional<QString> KeychainService::read(const QString &account)
{
    return readItem(account, nullptr);
}

std::optional<QString> KeychainService::read(const QString &account, const QString &reason,
                                             std::stop_token stop)
{
    const Prompt prompt{reason, std::move(stop)};
    return readItem(account, &prompt);
}

// Without a `prompt` none may appear.
std::optional<QString> KeychainService::readItem(const QString &account, const Prompt *prompt)
{
    if (const auto known = remembered(account); known.isKnown)
        return known.value;
    auto item = findItem(account, prompt);
    if (!item)
        return std::nullopt;
    if (item->presence == UserPresence::Required) {
        wipe(item->value);
        confirmPresence(prompt);
        item = findItem(account, nullptr);
        if (!item)
            return std::nullopt;
    }
    const auto text = textOf(*item);
    if (text)
        remember(account, *text);
    return text;
}

std::optional<SecretStoring::Item> KeychainService::findItem(const QString &account, const Prompt *prompt)
{
    try {
        if (prompt && m_store.condition(m_service) == SecretStoring::Condition::Locked)
            m_store.unlock(m_service, prompt->stop);
        return m_store.find(m_service, account);
    } catch (const SecretStoreError &error) {
        failReading(error.status());
    }
}

void KeychainService::confirmPresence(const Prompt *prompt)
{
    if (!prompt)
        failReading(KeychainStatus::InteractionNotAllowed);
    switch (m_presence.confirm(prompt->reason, prompt->stop)) {
    case UserPresenceConfirming::Answer::Confirmed:
        return;
    case UserPresenceConfirming::Answer::Refused:
        failReading(KeychainStatus::AuthenticationFailed);
    case UserPresenceConfirming::Answer::Dismissed:
        failReading(KeychainStatus::UserCancelled);
    case UserPresenceConfirming::Answer::Unavailable:
        failReading(KeychainStatus::InteractionNotAllowed);
    }
}

void KeychainService::remove(const QString &account)
{
    try {
        m_store.remove(m_service, account);
    } catch (const SecretStoreError &error) {
        fail(Operation::Delete, "Keychain delete failed: %d"_L1, error.status());
    }
    forget(account);
}

void KeychainService::setUserPresence(const QString &value, const QString &account, UserPresence presence)
{
    switch (presence) {
    case UserPresence::Required:
        return putBehindPresence(value, account);
    case UserPresence::NotRequired:
        return takeFromPresence(value, account);
    }
}

void KeychainService::putBehindPresence(const QString &value, const QString &account)
{
    if (!m_store.keepsPresence()) {
        Log::error(Log::Category::App, "Access control unavailable: %s"_L1, {"no keyring is in use"});
        throw KeychainError(Operation::Save, KeychainStatus::Parameter);
    }
    const SecretUtf8 secret(value);
    try {
        m_store.add(m_service, {account, secret.bytes, UserPresence::Required});
    } catch (const SecretStoreError &error) {
        Log::error(Log::Category::App, "Keychain add behind Touch ID failed: %d"_L1,
                   {number(error.status())});
        try {
            save(value, account);
        } catch (const KeychainError &) {
            // The first failure is the one to tell.
        }
        throw KeychainError(Operation::Save, error.status());
    }
    remember(account, value);
}

void KeychainService::takeFromPresence(const QString &value, const QString &account)
{
    const SecretUtf8 secret(value);
    try {
        m_store.add(m_service, {account, secret.bytes, UserPresence::NotRequired});
    } catch (const SecretStoreError &error) {
        Log::error(Log::Category::App, "Keychain add failed: %d"_L1, {number(error.status())});
        try {
            putBehindPresence(value, account);
        } catch (const KeychainError &) {
            // The first failure is the one to tell.
        }
        throw KeychainError(Operation::Save, error.status());
    }
    remember(account, value);
}

bool KeychainService::requiresUserPresence(const QString &account) noexcept
{
    try {
        auto item = m_store.find(m_service, account);
        if (!item)
            return false;
        wipe(item->value);
        return item->presence == UserPresence::Required;
    } catch (const std::exception &) {
        return false;
    }
}

int KeychainService::deleteAll() noexcept
{
    int count = removeItems();
    count += removeElsewhere() ? 1 : 0;
    for (const auto &former : formerKeychainServices)
        count += removeFormerService(former) ? 1 : 0;
    clearCache();
    return count;
}

int KeychainService::removeItems() noexcept
{
    int count = 0;
    try {
        for (auto &item : m_store.items(m_service)) {
            wipe(item.value);
            try {
                remove(item.account);
                ++count;
            } catch (const KeychainError &) {
                // Logged; the others still go.
            }
        }
    } catch (const std::exception &) {
        // A place that cannot be listed has nothing that could be removed.
    }
    return count;
}

bool KeychainService::removeElsewhere() noexcept
{
    try {
        return m_store.removeElsewhere(m_service);
    } catch (const std::exception &) {
        return false;
    }
}

bool KeychainService::removeFormerService(const QString &service) noexcept
{
    bool removedAny = false;
    try {
        for (auto &item : m_store.items(service)) {
            wipe(item.value);
            removedAny = m_store.remove(service, item.account) || removedAny;
        }
    } catch (const std::exception &) {
        // Left where it is.
    }
    return removedAny;
}

std::vector<LegacySecretListing::Secret> KeychainService::secretsOf(const QString &service)
{
    try {
        std::vector<Secret> secrets;
        for (auto &item : m_store.items(service)) {
            if (auto text = textOf(item))
                secrets.push_back({item.account, *text});
        }
        return secrets;
    } catch (const SecretStoreError &error) {
        failReading(error.status());
    }
}

void KeychainService::removeSecret(const QString &service, const QString &account)
{
    try {
        m_store.remove(service, account);
    } catch (const SecretStoreError &error) {
        fail(Operation::Delete, "Keychain delete failed: %d"_L1, error.status());
    }
}

void KeychainService::warmUp()
{
    try {
        auto items = m_store.items(m_service);
        const std::lock_guard lock(m_mutex);
        m_leftOut.emplace();
        for (auto &item : items) {
            const bool isGuarded = item.presence == UserPresence::Required;
            if (isGuarded)
                wipe(item.value);
            const auto text = isGuarded ? std::nullopt : textOf(item);
            if (text)
                m_cache.try_emplace(item.account, *text); // a save in between is newer
            else
                m_leftOut->insert(item.account);
        }
    } catch (const SecretStoreError &error) {
        failReading(error.status());
    }
}

void KeychainService::clearCache()
{
    std::map<QString, QString> former;
    {
        const std::lock_guard lock(m_mutex);
        former.swap(m_cache);
        m_leftOut.reset();
    }
    for (auto &[account, value] : former)
        wipe(value);
}

KeychainService::Remembered KeychainService::remembered(const QString &account) const
{
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_cache.find(account); found != m_cache.end())
        return {true, found->second};
    return {m_leftOut && !m_leftOut->contains(account), std::nullopt};
}

void KeychainService::remember(const QString &account, const QString &value)
{
    const std::lock_guard lock(m_mutex);
    m_cache[account] = value;
}

void KeychainService::forget(const QString &account)
{
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_cache.find(account); found != m_cache.end()) {
        wipe(found->second);
        m_cache.erase(found);
    }
    if (m_leftOut)
        m_leftOut->erase(account);
}

} // namespace morvane
