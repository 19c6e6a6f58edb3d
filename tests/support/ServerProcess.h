#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <vector>

namespace morvane {

// A server of ours, on a free port, for as long as this object lives. The kernel ends the child when the test
// dies. Its log comes through a pipe, so waiting for it needs no clock.
class ServerProcess {
public:
    struct Request {
        QByteArray method;
        QByteArray target;
        QJsonObject headers;
        QByteArray body;
        bool isOver = false;
        bool clientLeft = false; // before the answer was complete

        [[nodiscard]] QJsonObject json() const;
    };

    // Throws when the server doesn't come up.
    ServerProcess(const QString &program, const QStringList &words);
    ~ServerProcess();
    ServerProcess(const ServerProcess &) = delete;
    ServerProcess &operator=(const ServerProcess &) = delete;

    [[nodiscard]] const QString &baseUrl() const { return m_baseUrl; } // ends in /v1
    [[nodiscard]] QString rootUrl() const { return m_baseUrl.chopped(3); }

    // What it said of itself before it listened: a line of JSON, or nothing.
    [[nodiscard]] const QByteArray &description() const { return m_description; }

    // What has arrived so far, first come first. Handles no events.
    [[nodiscard]] const std::vector<Request> &requests();

    // Those of them whose path ends like this.
    [[nodiscard]] std::vector<Request> requestsTo(QByteArrayView end);

    // Those that asked for a reply in the chat-completions dialect.
    [[nodiscard]] std::vector<Request> chats() { return requestsTo("chat/completions"); }

    // Run the event loop until that many requests have arrived, or until that many are over.
    void awaitRequests(std::size_t count);
    void awaitEnded(std::size_t count);

    // Tells a server of ours on this machine something by its address. Returns once it has heard it, which
    // counts as a request; throws when it doesn't take it.
    static void post(quint16 port, const QByteArray &target);

private:
    void readLog();

    QProcess m_process;
    QString m_baseUrl;
    QByteArray m_description;
    std::vector<Request> m_requests;
};

} // namespace morvane
