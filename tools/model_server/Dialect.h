#pragma once

#include "loopback/Request.h"

#include <QJsonArray>

namespace morvane {

// How a request's interface, chat completions or Ollama's own, writes what a scenario sends.
namespace Dialect {

[[nodiscard]] QByteArray streamType(const Request &request);

// Whole lines of a stream, each with its end.
[[nodiscard]] QByteArray line(const Request &request, const QJsonObject &object);
[[nodiscard]] QByteArray opening(const Request &request); // before the first piece; may be nothing
[[nodiscard]] QByteArray textLine(const Request &request, const QString &text);
[[nodiscard]] QByteArray thoughtLine(const Request &request, const QString &thought);
[[nodiscard]] QByteArray toolCallLines(const Request &request, const QJsonArray &calls);
[[nodiscard]] QByteArray ending(const Request &request, const QString &finishReason);

// A line that stops inside its text, and the bytes that would end it and the stream.
[[nodiscard]] QByteArray textStart(const Request &request);
[[nodiscard]] QByteArray textRest(const Request &request);

// A reply in one object.
[[nodiscard]] QJsonObject whole(const Request &request, const QString &text, const QJsonArray &calls,
                                const QString &finishReason);

[[nodiscard]] QJsonObject error(const Request &request, const QString &message, int status);

// An error object whose text the caller begins and never ends.
[[nodiscard]] QByteArray errorStart(const Request &request);

} // namespace Dialect

} // namespace morvane
