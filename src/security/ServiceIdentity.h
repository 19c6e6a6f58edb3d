#pragma once

#include "security/KeychainServicing.h"

#include <map>
#include <mutex>

namespace morvane {

// The random number by which each online service knows this install: a different one for each service, made
// on this machine, derived from nothing.
//
// Any thread; calls may wait for the keychain, one at a time. Nothing here throws: a number that cannot be
// stored lives for one run.
class ServiceIdentity {
public:
    enum class Service { Hosted, Search };

    // `keychain` outlives it.
    explicit ServiceIdentity(KeychainServicing &keychain);

    // 64 lower-case hexadecimal characters.
    [[nodiscard]] QString credential(Service service);

    // Takes a credential that came from elsewhere.
    void replace(Service service, const QString &credential);

    // Makes this install look new to the service.
    QString reset(Service service);

    [[nodiscard]] static QString newCredential();

private:
    // Both with m_mutex held.
    [[nodiscard]] std::optional<QString> stored(Service service);
    [[nodiscard]] QString credentialOfThisRun(Service service);

    KeychainServicing &m_keychain;
    std::mutex m_mutex;
    std::map<Service, QString> m_ofThisRun; // what the keychain would not take or give back
};

} // namespace morvane
