#pragma once

#include "security/FieldSealing.h"
#include "utils/bytes/SecretBytes.h"

namespace morvane {

// Seals under a random key that is gone with the object. For stores that live in memory only. Any thread.
class ProcessKeySealing final : public FieldSealing {
public:
    // Throws std::runtime_error when the system's random source fails.
    ProcessKeySealing();

    // No value when the cipher fails: there is nobody a readable text in memory would serve.
    [[nodiscard]] std::optional<QString> seal(const QString &text) const override;
    [[nodiscard]] QString open(const QString &sealed) const override;

private:
    SecretBytes m_key;
};

} // namespace morvane
