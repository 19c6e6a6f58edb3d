#include "security/KeychainHome.h"

#include "async/CancelledError.h"
#include "security/DataKey.h"
#include "security/FormerServices.h"
#include "security/WrappedKey.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A keyring that starts with the session may take longer than one call waits for its answer.
constexpr int patience = 3;

bool isWrapped(const SecretStoring::Item &key)
{
    return WrappedKey::isWrapped(key.value) && WrappedKey::isReadable(QString::fromLatin1(key.value));
}

bool isUsable(const SecretStoring::Item &key)
{
    return isWrapped(key) || DataKey::parse(key.value);
}

} // namespace

KeychainHome::KeychainHome(SecretStoring &keyring, const QString &keyFilePath, QString dataAccount)
    : m_keyring(keyring)
    , m_file(keyFilePath)
    , m_dataAccount(std::move(dataAccount))
{}

KeychainOpening KeychainHome::open(const QString &service, KeyExpectation expectation,
                                   const std::function<void(KeychainState)> &progress, std::stop_token stop)
{
    m_file.removeStrays();
    const Keyring keyring = reachKeyring(service, progress, stop);
    throwIfStopped(stop);
    if (keyring != Keyring::Open)
        return openWithoutKeyring(keyring, service, expectation);
    if (m_file.exists() && !takeOverFile())
        return openFile(service, expectation);
    return settle(m_keyring, KeychainState::Ready, service, expectation);
}

KeychainHome::Keyring KeychainHome::reachKeyring(const QString &service,
                                                 const std::function<void(KeychainState)> &progress,
                                                 std::stop_token stop)
{
    try {
        switch (patientCondition(service, stop)) {
        case Condition::Open:
            return Keyring::Open;
        case Condition::Absent:
            return Keyring::Absent;
        case Condition::Locked:
            if (fileHoldsKey(service))
                return Keyring::Dismissed; // no password is needed for what the file has
            progress(KeychainState::WaitingForUnlock);
            m_keyring.unlock(service, stop);
            return Keyring::Open;
        }
    } catch (const SecretStoreError &error) {
        return error.status() == KeychainStatus::UserCancelled ? Keyring::Dismissed : Keyring::Silent;
    }
    return Keyring::Silent;
}

SecretStoring::Condition KeychainHome::patientCondition(const QString &service, const std::stop_token &stop)
{
    for (int attempt = 1;; ++attempt) {
        try {
            return m_keyring.condition(service);
        } catch (const SecretStoreError &) {
            throwIfStopped(stop);
            if (attempt == patience)
                throw;
        }
    }
}

KeychainOpening KeychainHome::openWithoutKeyring(Keyring keyring, const QString &service,
                                                 KeyExpectation expectation)
{
    if (m_file.exists())
        return openFile(service, expectation);
    if (keyring == Keyring::Dismissed)
        return {KeychainState::Locked};
    // Only a machine that has no keyring, and no data that one may hold the key to, gets a file.
    if (keyring == Keyring::Silent || expectation == KeyExpectation::MustExist)
        return {KeychainState::Unavailable};
    return openInFile(service);
}

KeychainOpening KeychainHome::openInFile(const QString &service)
{
    try {
        m_file.create();
    } catch (const SecretStoreError &) {
        return {KeychainState::FileUnreadable};
    }
    return openFile(service, KeyExpectation::Unknown);
}

KeychainOpening KeychainHome::openFile(const QString &service, KeyExpectation expectation)
{
    return settle(m_file, KeychainState::ReadyInFile, service, expectation);
}

KeychainOpening KeychainHome::settle(SecretStoring &place, KeychainState ready, const QString &service,
                                     KeyExpectation expectation)
{
    try {
        auto key = findKey(place, service);
        m_place = &place;
        const bool isWhole = key && isUsable(*key);
        const bool isUnderPassphrase = key && isWrapped(*key);
        if (key)
            wipe(key->value);
        if (isWhole)
            return {ready, key->presence == UserPresence::Required, isUnderPassphrase};
        if (expectation == KeyExpectation::MustExist)
            return {key ? KeychainState::KeyUnusable : KeychainState::KeyMissing};
        makeKey(place, service);
        return {ready};
    } catch (const SecretStoreError &) {
        return {ready == KeychainState::ReadyInFile ? KeychainState::FileUnreadable
                                                    : KeychainState::Unavailable};
    }
}

// A former service's key counts: the one-time move has yet to fetch it.
std::optional<SecretStoring::Item> KeychainHome::findKey(SecretStoring &place, const QString &service) const
{
    auto key = place.find(service, m_dataAccount);
    for (auto former = formerKeychainServices.begin(); !key && former != formerKeychainServices.end();
         ++former)
        key = place.find(*former, m_dataAccount);
    return key;
}

void KeychainHome::makeKey(SecretStoring &place, const QString &service) const
{
    QByteArray text = DataKey::print(DataKey::make());
    try {
        place.add(service, {m_dataAccount, text});
    } catch (const SecretStoreError &) {
        wipe(text);
        throw;
    }
    wipe(text);
}

bool KeychainHome::fileHoldsKey(const QString &service)
{
    try {
        auto key = findKey(m_file, service);
        const bool isWhole = key && isUsable(*key);
        if (key)
            wipe(key->value);
        return isWhole;
    } catch (const SecretStoreError &) {
        return false;
    }
}

// All or nothing: where the keyring holds another value for an account already, or does not give back what it
// was given, the file stays in use and the keyring is left as it was.
bool KeychainHome::takeOverFile()
{
    std::vector<KeyFileFormat::Entry> missing;
    try {
        for (const auto &entry : m_file.entries()) {
            switch (compareWithKeyring(entry)) {
            case Copy::Same:
                break;
            case Copy::Different:
                return false;
            case Copy::Missing:
                missing.push_back(entry);
                break;
            }
        }
    } catch (const SecretStoreError &) {
        return false;
    }
    if (!addVerified(missing))
        return false;
    for (std::size_t i = 0; i < missing.size(); ++i)
        Log::info(Log::Category::App, "Migrated a stored secret to the data-protection keychain"_L1);
    try {
        m_file.wipeOut();
    } catch (const SecretStoreError &) {
        // Still whole; the next start finds the same values in the keyring and tries again.
    }
    return true;
}

bool KeychainHome::addVerified(const std::vector<KeyFileFormat::Entry> &entries)
{
    auto entry = entries.begin();
    try {
        for (; entry != entries.end(); ++entry) {
            m_keyring.add(entry->service, {entry->account, entry->value});
            if (compareWithKeyring(*entry) != Copy::Same)
                break;
        }
    } catch (const SecretStoreError &) {
        // `entry` tells how far it came.
    }
    if (entry == entries.end())
        return true;
    for (auto added = entries.begin(); added <= entry; ++added) {
        try {
            m_keyring.remove(added->service, added->account);
        } catch (const SecretStoreError &) {
            // A copy stays behind; an equal one does no harm at the next start.
        }
    }
    return false;
}

KeychainHome::Copy KeychainHome::compareWithKeyring(const KeyFileFormat::Entry &entry)
{
    auto stored = m_keyring.find(entry.service, entry.account);
    if (!stored)
        return Copy::Missing;
    const bool same = stored->value == entry.value;
    wipe(stored->value);
    return same ? Copy::Same : Copy::Different;
}

SecretStoring &KeychainHome::place() const
{
    SecretStoring *const chosen = m_place;
    if (!chosen)
        throw SecretStoreError(KeychainStatus::NotAvailable);
    return *chosen;
}

SecretStoring::Condition KeychainHome::condition(const QString &service)
{
    return place().condition(service);
}

void KeychainHome::unlock(const QString &service, std::stop_token stop)
{
    place().unlock(service, stop);
}

std::optional<SecretStoring::Item> KeychainHome::find(const QString &service, const QString &account)
{
    return place().find(service, account);
}

std::vector<SecretStoring::Item> KeychainHome::items(const QString &service)
{
    return place().items(service);
}

void KeychainHome::add(const QString &service, const Item &item)
{
    place().add(service, item);
}

bool KeychainHome::update(const QString &service, const QString &account, const QByteArray &value)
{
    return place().update(service, account, value);
}

bool KeychainHome::remove(const QString &service, const QString &account)
{
    return place().remove(service, account);
}

// A file that could not be wiped when its secrets moved, or a keyring whose secrets were others than the
// file's.
bool KeychainHome::removeElsewhere(const QString &service)
{
    if (&place() == &m_keyring) {
        const bool isLeft = m_file.exists();
        if (isLeft)
            m_file.wipeOut();
        return isLeft;
    }
    bool removedAny = false;
    for (auto &item : m_keyring.items(service)) {
        wipe(item.value);
        removedAny = m_keyring.remove(service, item.account) || removedAny;
    }
    return removedAny;
}

bool KeychainHome::keepsPresence() const
{
    SecretStoring *const chosen = m_place;
    return chosen && chosen->keepsPresence();
}

} // namespace morvane
