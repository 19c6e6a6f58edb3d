#pragma once

#include "view_models/AppRequest.h"

#include <QByteArray>
#include <QByteArrayView>

#include <vector>

namespace morvane {

// A request as it goes from a second start to the first: fields that each end with a zero byte, the first
// byte of each saying what it is. A beginning that lost its end, since its sender was killed, spoils no
// other.
class RequestMessage {
public:
    static constexpr qsizetype largest = 1 << 20; // bytes of one request; a larger one is dropped

    [[nodiscard]] static QByteArray of(const AppRequest &request);

    // The requests that these bytes complete.
    [[nodiscard]] std::vector<AppRequest> read(QByteArrayView bytes);

private:
    [[nodiscard]] bool takeField(QByteArrayView field); // true for the last one of a request
    void start(bool isGood);

    AppRequest m_request;
    QByteArray m_field;
    qsizetype m_size = 0; // of the fields since the beginning
    bool m_hasBegun = false;
};

} // namespace morvane
