#pragma once

#include "security/FieldSealing.h"

namespace morvane {

// Sealing that a test can see through and switch off: the shape and the lengths of the real form (marker,
// base64 of 12 bytes of nonce, the hidden text, 16 bytes of tag) with no cipher behind it.
class FakeFieldSealing final : public FieldSealing {
public:
    explicit FakeFieldSealing(char key = 'k')
        : m_key(key)
    {}

    [[nodiscard]] std::optional<QString> seal(const QString &text) const override;
    [[nodiscard]] QString open(const QString &sealed) const override;

    // While locked nothing is sealed and sealed texts open to nothing.
    void setLocked(bool locked) { m_isLocked = locked; }

    [[nodiscard]] static bool isSealed(const QString &text);

private:
    char m_key;
    bool m_isLocked = false;
    mutable quint64 m_seals = 0; // makes every seal differ
};

} // namespace morvane
