#pragma once

#include "ai/private_cloud/Secp256k1.h"
#include "loopback/HoldPoint.h"

#include <QString>

#include <map>

namespace morvane {

// What the server remembers from one request to the next.
class CloudState {
public:
    // The key pair of a model's server, made when it is first asked for.
    [[nodiscard]] const Secp256k1::KeyPair &keyOf(const QString &model);

    // As after a restart of that server: the next proof vouches for another key, and the old one opens
    // nothing.
    void replaceKeyOf(const QString &model) { m_keys.erase(model); }

    // How often `what` has happened, this time included.
    [[nodiscard]] int count(const QString &what) { return ++m_counts[what]; }

    [[nodiscard]] HoldPoint &holdPoint() { return m_holdPoint; }

private:
    std::map<QString, Secp256k1::KeyPair> m_keys;
    std::map<QString, int> m_counts;
    HoldPoint m_holdPoint;
};

} // namespace morvane
