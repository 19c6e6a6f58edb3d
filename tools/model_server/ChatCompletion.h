#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace morvane {

// JSON objects of the chat-completions dialect.
namespace ChatCompletion {

// One piece of a streamed reply. An empty reason reads as null.
[[nodiscard]] QJsonObject chunk(const QString &model, const QJsonObject &delta,
                                const QString &finishReason = {});
[[nodiscard]] QJsonObject textChunk(const QString &model, const QString &text);

// A whole reply.
[[nodiscard]] QJsonObject completion(const QString &model, const QJsonObject &message,
                                     const QString &finishReason);

[[nodiscard]] QJsonObject error(const QString &message, int status);

// An empty id is left out.
[[nodiscard]] QJsonObject toolCall(const QString &id, const QString &name, const QString &arguments);

} // namespace ChatCompletion

} // namespace morvane
