#pragma once

#include "ai/contract/AIMessage.h"
#include "ai/contract/AITool.h"
#include "ai/private_cloud/VeniceE2EESession.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "support/PrivateCloudServer.h"

namespace morvane {

// The client's part by hand: asks for proofs, lists and sealed replies, and tells what came in one line.
class PrivateCloudClient {
public:
    explicit PrivateCloudClient(const PrivateCloudServer &server);

    // "version, entries" with the number of withdrawals behind them; else the refusal or the HTTP status, or
    // "cut". `floor` is the lowest version that is taken.
    QString fetchList(std::int64_t floor = 0);
    [[nodiscard]] const QByteArray &listBytes() const { return m_listBytes; }

    // "ok" when the proof holds under the last good list, the case of its failure, the HTTP status or "cut".
    QString prove(const QString &model);

    // A turn sealed to the key of the last proof. Sealed pieces as their text, others between brackets, as is
    // the reason of the end; else "HTTP" and the status with the server's words, or "cut" behind what came.
    QString turn(const QString &model, const std::vector<AIMessage> &messages,
                 const std::vector<AITool> &tools = {});

    // The head of a request that a turn would make, and its body, to be spoiled.
    [[nodiscard]] HttpRequest request(const QString &model, const VeniceE2EESession &session,
                                      const std::vector<AIMessage> &messages,
                                      const std::vector<AITool> &tools = {}) const;
    [[nodiscard]] VeniceE2EESession session() const { return VeniceE2EESession(*m_verified); }

    struct Answer {
        int status = 0; // 0: none came
        QByteArray body;
        bool isWhole = false;
    };
    Answer send(HttpRequest request);

    // The response's head alone, with its body still to come.
    HttpResponse begin(HttpRequest request);

private:
    QString m_baseUrl;
    QJsonObject m_values;
    QByteArray m_listBytes;
    VeniceMeasurementAllowlist m_allowlist;
    std::optional<VeniceAttestationVerifier::Verified> m_verified;
    ManualClock m_clock;
    NetworkLedger m_ledger;
    AppNetwork m_network{m_ledger, m_clock};
    std::shared_ptr<HttpSession> m_session;
};

} // namespace morvane
