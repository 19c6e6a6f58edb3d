#include "attestation/VeniceMeasurementAnchorStore.h"

namespace morvane {

const QString VeniceMeasurementAnchorStore::account = QStringLiteral("accepted-servers-anchor");

VeniceMeasurementListAnchor VeniceMeasurementAnchorStore::read() const
{
    if (!m_keychain)
        throw Unreadable();
    const std::optional<QString> stored = m_keychain->read(account);
    if (!stored)
        return {};
    auto anchor = VeniceMeasurementListAnchor::read(*stored);
    if (!anchor)
        throw Unreadable();
    return *std::move(anchor);
}

void VeniceMeasurementAnchorStore::save(const VeniceMeasurementListAnchor &anchor) const
{
    if (!m_keychain)
        throw Unreadable();
    m_keychain->save(anchor.json(), account);
}

} // namespace morvane
