#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <vector>

namespace morvane {

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

    // A model that the server says it has.
    struct Listed {
        QString name;
        QStringList capabilities; // as Ollama names them
        QString remoteHost = {};  // where it runs when that is a service on the internet
        QString scenario = QStringLiteral("practice-fast");
    };
    enum class Interface { chatCompletions, ollama }; // the second comes on top of the first

    // The program's file.
    [[nodiscard]] static QString program();

    // Throws when the server doesn't come up.
    explicit ModelServer(const QStringList &options = {});

    // Lists just these models; without any, one for each scenario.
    explicit ModelServer(Interface interface, const std::vector<Listed> &models = {});
    ~ModelServer();
    ModelServer(const ModelServer &) = delete;
    ModelServer &operator=(const ModelServer &) = delete;

    [[nodiscard]] const QString &baseUrl() const { return m_baseUrl; } // ends in /v1
    [[nodiscard]] QString rootUrl() const { return m_baseUrl.chopped(3); }

    // What has arrived so far, first come first. Handles no events.
    [[nodiscard]] const std::vector<Request> &requests();

    // Those of them that asked for a reply in the chat-completions dialect.
    [[nodiscard]] std::vector<Request> chats();

    // Run the event loop until that many requests have arrived, or until that many are over.
    void awaitRequests(std::size_t count);
    void awaitEnded(std::size_t count);

private:
    void readLog();

    QProcess m_process;
    QString m_baseUrl;
    std::vector<Request> m_requests;
};

} // namespace morvane
