#pragma once

#include <QString>

#include <vector>

namespace morvane {

// Items that older builds kept under other service names, for the one-time move into this build's name. Any
// thread; waits for another process. Throws KeychainError.
class LegacySecretListing {
public:
    struct Secret {
        QString account;
        QString value;

        bool operator==(const Secret &) const = default;
    };

    virtual ~LegacySecretListing() = default;

    [[nodiscard]] virtual std::vector<Secret> secretsOf(const QString &service) = 0;
    virtual void removeSecret(const QString &service, const QString &account) = 0;
};

} // namespace morvane
