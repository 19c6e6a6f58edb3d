#pragma once

#include "attestation/VeniceMeasurementListAnchor.h"
#include "security/KeychainServicing.h"

#include <exception>

namespace morvane {

// The anchor's place in the keychain. Calls wait for the keychain, so they belong off the GUI thread; any
// thread.
class VeniceMeasurementAnchorStore {
public:
    static const QString account; // "accepted-servers-anchor"

    class Unreadable final : public std::exception {
    public:
        [[nodiscard]] const char *what() const noexcept override { return "the anchor can't be read"; }
    };

    // Without a keychain nothing can be read. `keychain` outlives the store.
    explicit VeniceMeasurementAnchorStore(KeychainServicing *keychain)
        : m_keychain(keychain)
    {}

    // The empty anchor when none was ever saved. Throws KeychainError or Unreadable.
    [[nodiscard]] VeniceMeasurementListAnchor read() const;

    // Throws KeychainError or Unreadable.
    void save(const VeniceMeasurementListAnchor &anchor) const;

private:
    KeychainServicing *m_keychain;
};

} // namespace morvane
