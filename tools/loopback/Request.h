#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace morvane {

// One request as it arrived, and what its JSON body asks for.
struct Request {
    int number = 0; // counted from 1 over the life of the log
    QByteArray method;
    QByteArray target; // path and query
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
    QJsonObject json; // empty when the body is no JSON object

    [[nodiscard]] QByteArray path() const;
    [[nodiscard]] QString query(const QString &name) const; // decoded; empty when it is absent
    [[nodiscard]] std::optional<QByteArray> header(QByteArrayView name) const;

    [[nodiscard]] QString model() const;
    [[nodiscard]] bool isOllama() const;    // of Ollama's own interface
    [[nodiscard]] bool wantsStream() const; // what is usual there when the request doesn't say
    [[nodiscard]] bool offersTools() const;
    [[nodiscard]] bool asksForThinking() const;
    [[nodiscard]] bool hasImages() const;
    [[nodiscard]] QJsonObject lastMessage() const;
    [[nodiscard]] QString lastUserText() const;
};

} // namespace morvane
