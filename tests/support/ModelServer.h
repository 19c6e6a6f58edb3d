#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <vector>

// The real model server, on a free port, for as long as this object lives. The kernel ends the child when
// the test dies. Its log comes through a pipe, so waiting for it needs no clock.
class ModelServer {
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
    explicit ModelServer(const QStringList &options = {});
    ~ModelServer();
    ModelServer(const ModelServer &) = delete;
    ModelServer &operator=(const ModelServer &) = delete;

    [[nodiscard]] const QString &baseUrl() const { return m_baseUrl; } // ends in /v1

    // What has arrived so far, first come first. Handles no events.
    [[nodiscard]] const std::vector<Request> &requests();

    // Run the event loop until that many requests have arrived, or until that many are over.
    void awaitRequests(std::size_t count);
    void awaitEnded(std::size_t count);

private:
    void readLog();

    QProcess m_process;
    QString m_baseUrl;
    std::vector<Request> m_requests;
};
