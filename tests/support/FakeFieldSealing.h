#pragma once

#include "security/ProcessKeySealing.h"
#include "security/SealedForm.h"

namespace morvane {

// Sealing under a key of its own that a test can switch off.
class FakeFieldSealing final : public FieldSealing {
public:
    [[nodiscard]] std::optional<QString> seal(const QString &text) const override
    {
        return m_isLocked ? std::nullopt : m_sealing.seal(text);
    }
    [[nodiscard]] QString open(const QString &sealed) const override
    {
        return m_isLocked && isSealed(sealed) ? QString() : m_sealing.open(sealed);
    }

    // While locked nothing is sealed and sealed texts open to nothing.
    void setLocked(bool locked) { m_isLocked = locked; }

    [[nodiscard]] static bool isSealed(const QString &text) { return SealedForm::isSealedField(text); }

private:
    bool m_isLocked = false;
    ProcessKeySealing m_sealing;
};

} // namespace morvane
