#include "security/ProcessKeySealing.h"

#include "security/SealedForm.h"

#include <stdexcept>

namespace morvane {

ProcessKeySealing::ProcessKeySealing()
    : m_key(SecretBytes::random(SealedForm::keySize))
{}

std::optional<QString> ProcessKeySealing::seal(const QString &text) const
{
    try {
        return SealedForm::sealField(text, m_key);
    } catch (const std::runtime_error &) {
        return std::nullopt;
    }
}

QString ProcessKeySealing::open(const QString &sealed) const
{
    if (!SealedForm::isSealedField(sealed))
        return sealed;
    return SealedForm::openField(sealed, m_key).value_or(QString());
}

} // namespace morvane
