#include "CloudState.h"

namespace morvane {

const Secp256k1::KeyPair &CloudState::keyOf(const QString &model)
{
    auto key = m_keys.find(model);
    if (key == m_keys.end())
        key = m_keys.emplace(model, Secp256k1::generateKeyPair()).first;
    return key->second;
}

} // namespace morvane
