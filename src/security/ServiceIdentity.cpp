#include "security/ServiceIdentity.h"

#include "security/KeychainError.h"
#include "utils/bytes/Hex.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/log/Log.h"

#include <QUuid>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString accountOf(ServiceIdentity::Service service)
{
    switch (service) {
    case ServiceIdentity::Service::Hosted:
        return u"service-identity.hosted"_s;
    case ServiceIdentity::Service::Search:
        return u"service-identity.search"_s;
    }
    return {};
}

} // namespace

ServiceIdentity::ServiceIdentity(KeychainServicing &keychain)
    : m_keychain(keychain)
{}

QString ServiceIdentity::newCredential()
{
    constexpr std::size_t size = 32;
    try {
        return Hex::encode(SecretBytes::random(size).view());
    } catch (const std::runtime_error &) {
        return Hex::encode(QUuid::createUuid().toRfc4122() + QUuid::createUuid().toRfc4122());
    }
}

QString ServiceIdentity::credential(Service service)
{
    const std::lock_guard lock(m_mutex);
    try {
        if (auto known = stored(service))
            return *known;
        // Another process may have just written it.
        if (auto known = stored(service))
            return *known;
    } catch (const KeychainError &) {
        Log::error(Log::Category::App,
                   "Keychain refused a service credential; using an in-memory one for this run"_L1);
        return credentialOfThisRun(service);
    }
    if (const auto known = m_ofThisRun.find(service); known != m_ofThisRun.end())
        return known->second;
    auto credential = newCredential();
    try {
        m_keychain.save(credential, accountOf(service));
    } catch (const KeychainError &) {
        Log::error(Log::Category::App,
                   "Could not store a service credential; using an in-memory one for this run"_L1);
        m_ofThisRun[service] = credential;
    }
    return credential;
}

QString ServiceIdentity::reset(Service service)
{
    const std::lock_guard lock(m_mutex);
    auto credential = newCredential();
    m_ofThisRun.erase(service);
    try {
        m_keychain.save(credential, accountOf(service));
    } catch (const KeychainError &) {
        Log::error(Log::Category::App,
                   "Could not store a reset service credential; using an in-memory one for this run"_L1);
        m_ofThisRun[service] = credential;
    }
    return credential;
}

void ServiceIdentity::replace(Service service, const QString &credential)
{
    const std::lock_guard lock(m_mutex);
    try {
        m_keychain.save(credential, accountOf(service));
        m_ofThisRun.erase(service);
    } catch (const KeychainError &) {
        Log::error(Log::Category::App, "Could not store an exchanged service credential"_L1);
    }
}

std::optional<QString> ServiceIdentity::stored(Service service)
{
    auto value = m_keychain.read(accountOf(service));
    if (value && value->isEmpty())
        return std::nullopt;
    return value;
}

QString ServiceIdentity::credentialOfThisRun(Service service)
{
    auto &credential = m_ofThisRun[service];
    if (credential.isEmpty())
        credential = newCredential();
    return credential;
}

} // namespace morvane
