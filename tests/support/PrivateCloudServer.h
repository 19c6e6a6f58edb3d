#pragma once

#include "support/ServerProcess.h"

#include <QTemporaryDir>

namespace morvane {

// The real server of the private cloud, and all that crosses the wire to it.
class PrivateCloudServer {
public:
    using Request = ServerProcess::Request;

    // The program's file.
    [[nodiscard]] static QString program();

    // What deployment/development.json says: what a build must be told to believe this server.
    [[nodiscard]] static QJsonObject developmentValues();

    // Options as in the program's help. Throws when the server doesn't come up.
    explicit PrivateCloudServer(const QStringList &options = {});

    [[nodiscard]] const QString &baseUrl() const { return m_process.baseUrl(); } // ends in /v1
    [[nodiscard]] quint16 port() const;

    // What has arrived so far, first come first: all of it, the requests for proofs, the sealed turns, and
    // the fetches of the list without its signature.
    [[nodiscard]] const std::vector<Request> &requests() { return m_process.requests(); }
    [[nodiscard]] std::vector<Request> proofs() { return m_process.requestsTo("/attestation"); }
    [[nodiscard]] std::vector<Request> turns() { return m_process.chats(); }
    [[nodiscard]] std::vector<Request> lists() { return m_process.requestsTo("/measurements"); }

    // Run the event loop until that many requests have arrived, or until that many are over.
    void awaitRequests(std::size_t count) { m_process.awaitRequests(count); }
    void awaitEnded(std::size_t count) { m_process.awaitEnded(count); }

    // Every byte so far, connection by connection, first what was received and then what was sent.
    [[nodiscard]] QByteArray wire() const;

    // Lets one held answer go on, or the next one that would be held. Returns once the server has heard it;
    // it counts as a request.
    void goOn() const;

private:
    QTemporaryDir m_folder;
    ServerProcess m_process;
};

} // namespace morvane
