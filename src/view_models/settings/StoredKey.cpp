#include "view_models/settings/StoredKey.h"

#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/KeychainTasks.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/text/Text.h"

#include <utility>

namespace morvane {

StoredKey::StoredKey(KeychainServicing &keychain, QString account, Work &work, QObject *parent)
    : QObject(parent)
    , m_keychain(keychain)
    , m_account(std::move(account))
    , m_work(work)
{}

bool StoredKey::exists() const
{
    try {
        return !value().isEmpty();
    } catch (const KeychainError &) {
        return false;
    }
}

QString StoredKey::value() const
{
    return m_keychain.read(m_account).value_or(QString());
}

void StoredKey::save(const QString &key)
{
    m_saving = TaskHandle::start([this, key = Text::trimmed(key)](std::stop_token) {
        return store(QPointer(this), &m_work, &m_keychain, m_account, key);
    });
}

QCoro::Task<> StoredKey::store(QPointer<StoredKey> self, Work *work, KeychainServicing *keychain,
                               QString account, QString key)
{
    ErrorPresentation failure;
    try {
        if (key.isEmpty())
            co_await KeychainTasks::remove(*work, *keychain, account);
        else
            co_await KeychainTasks::save(*work, *keychain, key, account);
    } catch (...) {
        failure = presentationOf(std::current_exception());
    }
    wipe(key);
    if (!self)
        co_return;
    if (failure.message.isEmpty())
        Q_EMIT self->stored();
    else
        Q_EMIT self->failed(failure);
    if (self)
        Q_EMIT self->changed();
}

} // namespace morvane
