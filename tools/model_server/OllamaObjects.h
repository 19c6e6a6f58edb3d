#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace morvane {

struct ListedModel;

// JSON objects of Ollama's own interface.
namespace OllamaObjects {

// One line of a streamed reply.
[[nodiscard]] QJsonObject chunk(const QString &model, const QJsonObject &message);

// The last line, with its counts; a whole reply is one too. Its message is empty unless one is given.
[[nodiscard]] QJsonObject closing(const QString &model, const QString &doneReason,
                                  const QJsonObject &message = {});

[[nodiscard]] QJsonObject message(const QString &content);

// Calls as this interface writes them: arguments are objects. `calls` are ChatCompletion::toolCall() ones.
[[nodiscard]] QJsonArray toolCalls(const QJsonArray &calls);

[[nodiscard]] QJsonObject error(const QString &message);

// An entry of the model list, and what is told of one model.
[[nodiscard]] QJsonObject tag(const ListedModel &model);
[[nodiscard]] QJsonObject shown(const ListedModel &model);

} // namespace OllamaObjects

} // namespace morvane
