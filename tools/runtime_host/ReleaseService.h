#pragma once

#include "Delivery.h"

#include "loopback/Server.h"

namespace morvane {

// A release page's downloads: the public address of the one archive, which leads to a storage on another
// port. POST /play?delivery=NAME changes how it comes, POST /go-on lets a held one go on.
class ReleaseService final : public Service {
public:
    ReleaseService(QByteArray name, QByteArray archive, PracticeFolder folder);

    void setStoragePort(std::uint16_t port) { m_storagePort = port; }
    void setDelivery(const QString &kind) { m_delivery.setKind(kind); }

    Work answer(Exchange &exchange) override;

private:
    Work play(Exchange &exchange);

    QByteArray m_name;
    Delivery m_delivery;
    std::uint16_t m_storagePort = 0;
};

} // namespace morvane
