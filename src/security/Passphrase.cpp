#include "security/Passphrase.h"

namespace morvane {

Passphrase::Passphrase(QString &&typed)
{
    QString composed = typed.normalized(QString::NormalizationForm_C);
    wipe(typed);
    m_characters = composed.size();
    QByteArray bytes = composed.toUtf8();
    wipe(composed);
    m_bytes = std::make_shared<const SecretBytes>(bytes);
    wipe(bytes);
}

const SecretBytes &Passphrase::bytes() const
{
    static const SecretBytes none;
    return m_bytes ? *m_bytes : none;
}

bool Passphrase::operator==(const Passphrase &other) const
{
    return bytes().view() == other.bytes().view();
}

} // namespace morvane
