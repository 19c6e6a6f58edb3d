#include "security/LocalDataVault.h"

#include "security/DataKey.h"
#include "security/KeychainError.h"
#include "security/SealedForm.h"
#include "security/TestHost.h"
#include "security/WrappedKey.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool isKey(const QString &storedText)
{
    return WrappedKey::isWrapped(storedText) || DataKey::parse(storedText).has_value();
}

QString textOf(const SecretBytes &key)
{
    QByteArray encoded = DataKey::print(key);
    QString text = QString::fromLatin1(encoded);
    wipe(encoded);
    return text;
}

SealingTrouble troubleOf(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const LocalDataVault::KeyMissing &) {
        return SealingTrouble::KeyMissing;
    } catch (const KeychainError &error) {
        return error.status() == KeychainStatus::InteractionNotAllowed ? SealingTrouble::KeychainLocked
                                                                       : SealingTrouble::KeychainSilent;
    } catch (const std::exception &) {
        return SealingTrouble::Failed;
    }
}

} // namespace

const QString LocalDataVault::keyAccount = u"local-data-key"_s;

LocalDataVault::LocalDataVault(KeychainServicing &keychain)
    : m_keychain(keychain)
{}

SecretBytes LocalDataVault::key() const
{
    if (isLocked())
        throw Locked();
    if (auto stored = m_keychain.read(keyAccount)) {
        if (auto key = keyFrom(std::move(*stored)))
            return std::move(*key);
    }
    return makeKey();
}

std::optional<SecretBytes> LocalDataVault::keyFrom(QString &&storedText) const
{
    if (WrappedKey::isWrapped(storedText)) {
        auto opened = openedKey();
        if (!opened)
            throw Locked();
        return opened;
    }
    auto key = DataKey::parse(storedText);
    if (storedText.isDetached())
        wipe(storedText); // the cache let go of it meanwhile, so this is the last copy
    return key;
}

std::optional<SecretBytes> LocalDataVault::openedKey() const
{
    const std::lock_guard lock(m_mutex);
    return m_openedKey ? std::optional<SecretBytes>(m_openedKey->view()) : std::nullopt;
}

SecretBytes LocalDataVault::makeKey() const
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_keyMustExist)
            throw KeyMissing();
    }
    // Two first seals at once must end with one key: the second finds what the first has saved.
    const std::lock_guard creation(m_creation);
    if (auto stored = m_keychain.read(keyAccount)) {
        if (auto key = keyFrom(std::move(*stored)))
            return std::move(*key);
    }
    auto key = DataKey::make();
    m_keychain.save(textOf(key), keyAccount);
    return key;
}

void LocalDataVault::requireExistingKey()
{
    const std::lock_guard lock(m_mutex);
    m_keyMustExist = true;
}

bool LocalDataVault::mayHoldKey() const
{
    try {
        auto stored = m_keychain.read(keyAccount);
        const bool isThere = stored && isKey(*stored);
        if (stored && stored->isDetached())
            wipe(*stored);
        return isThere;
    } catch (const KeychainError &) {
        return true;
    }
}

std::optional<QString> LocalDataVault::seal(const QString &text) const
{
    try {
        QString sealed = SealedForm::sealField(text, key());
        note(SealingTrouble::None);
        return sealed;
    } catch (const Locked &) {
        return std::nullopt;
    } catch (...) {
        note(troubleOf(std::current_exception()));
        return text;
    }
}

QString LocalDataVault::open(const QString &text) const
{
    if (!SealedForm::isSealedField(text))
        return text;
    try {
        return SealedForm::openField(text, key()).value_or(QString());
    } catch (const std::exception &) {
        return {};
    }
}

QByteArray LocalDataVault::seal(const QByteArray &data) const
{
    QByteArray sealed = SealedForm::sealFile(data, key());
    note(SealingTrouble::None);
    return sealed;
}

std::optional<QByteArray> LocalDataVault::open(const QByteArray &data) const
{
    if (!SealedForm::isSealedFile(data))
        return data;
    try {
        return SealedForm::openFile(data, key());
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

void LocalDataVault::writeSealed(const QByteArray &data, const QString &path) const
{
    if (isLocked())
        throw Locked();
    QByteArray contents;
    try {
        contents = seal(data);
    } catch (...) {
        note(troubleOf(std::current_exception()));
        contents = data;
    }
    writePrivate(contents, path);
}

void LocalDataVault::writePrivate(const QByteArray &data, const QString &path)
{
    PrivateFile::write(path, data);
}

void LocalDataVault::destroyKey()
{
    if (TestHost::isActive()) {
        Log::error(Log::Category::App, "Refused to destroy the local data key under the test host"_L1);
        return;
    }
    try {
        m_keychain.remove(keyAccount);
    } catch (const std::exception &) {
        // Logged where it failed. The erasure goes on: what it removes no longer needs the key.
    }
    const std::lock_guard lock(m_mutex);
    m_keyMustExist = false;
    m_openedKey.reset();
}

void LocalDataVault::moveKey(UserPresence presence)
{
    if (TestHost::isActive()) {
        Log::error(Log::Category::App,
                   "Refused to move the local data key behind Touch ID under the test host"_L1);
        throw Locked();
    }
    (void)key(); // there is one, and it is open
    auto stored = m_keychain.read(keyAccount);
    if (!stored)
        throw KeyMissing();
    m_keychain.setUserPresence(*stored, keyAccount, presence);
    lockAgain();
}

void LocalDataVault::wrapKey(const Passphrase &passphrase, const Argon2id::Cost &cost)
{
    auto key = this->key();
    const QString wrapped = QString::fromLatin1(WrappedKey::wrap(key, passphrase.bytes(), cost));
    wipeStack();
    bool wasWrapped = false;
    {
        // Kept before the keychain has the other form, so that nothing that is sealed meanwhile is dropped.
        const std::lock_guard lock(m_mutex);
        if (m_isLocked)
            throw Locked();
        wasWrapped = m_openedKey.has_value();
        m_openedKey = std::move(key);
    }
    try {
        replaceKeyText(wrapped);
    } catch (...) {
        const std::lock_guard lock(m_mutex);
        if (!wasWrapped)
            m_openedKey.reset();
        throw;
    }
}

void LocalDataVault::bareKey()
{
    replaceKeyText(textOf(key()));
    const std::lock_guard lock(m_mutex);
    m_openedKey.reset();
}

void LocalDataVault::replaceKeyText(const QString &text)
{
    if (TestHost::isActive()) {
        Log::error(Log::Category::App, "Refused to replace the local data key under the test host"_L1);
        throw Locked();
    }
    m_keychain.save(text, keyAccount);
    lockAgain();
}

std::optional<SecretBytes> LocalDataVault::unwrapKey(const Passphrase &passphrase) const
{
    const auto stored = m_keychain.read(keyAccount);
    if (!stored)
        throw KeyMissing();
    auto key = WrappedKey::unwrap(*stored, passphrase.bytes());
    wipeStack();
    return key;
}

void LocalDataVault::lock()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isLocked = true;
        m_openedKey.reset();
    }
    m_keychain.clearCache();
}

// A lock that came meanwhile emptied the keychain's cache before that got its latest text.
void LocalDataVault::lockAgain()
{
    if (isLocked())
        lock();
}

void LocalDataVault::unlock(std::optional<SecretBytes> openedKey)
{
    const std::lock_guard lock(m_mutex);
    m_isLocked = false;
    if (openedKey)
        m_openedKey = std::move(openedKey);
}

SealingTrouble LocalDataVault::trouble() const
{
    const std::lock_guard lock(m_mutex);
    return m_trouble;
}

void LocalDataVault::setTroubleObserver(std::function<void()> observer)
{
    const std::lock_guard lock(m_mutex);
    m_troubleChanged = std::move(observer);
}

void LocalDataVault::note(SealingTrouble trouble) const
{
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_trouble, trouble) != trouble && m_troubleChanged)
        m_troubleChanged();
}

bool LocalDataVault::isLocked() const
{
    const std::lock_guard lock(m_mutex);
    return m_isLocked;
}

} // namespace morvane
