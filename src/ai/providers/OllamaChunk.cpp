#include "ai/providers/OllamaChunk.h"

#include "ai/providers/LineJson.h"
#include "utils/text/Json.h"
#include "utils/text/Text.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Arguments are an object. Servers that only resemble Ollama send its JSON text.
QString argumentsText(const QJsonValue &arguments)
{
    if (arguments.isObject())
        return QString::fromUtf8(QJsonDocument(arguments.toObject()).toJson(QJsonDocument::Compact));
    const QString text = Text::trimmed(arguments.toString());
    return text.isEmpty() ? u"{}"_s : text;
}

std::vector<AIToolCall> toolCallsOf(const QJsonObject &message)
{
    std::vector<AIToolCall> calls;
    for (const QJsonValue entry : message.value("tool_calls"_L1).toArray()) {
        const QJsonObject function = entry["function"_L1].toObject();
        const QString name = function.value("name"_L1).toString();
        if (!name.isEmpty())
            calls.push_back({entry["id"_L1].toString(), name, argumentsText(function.value("arguments"_L1))});
    }
    return calls;
}

std::optional<QString> words(const QJsonObject &object, QLatin1StringView key)
{
    auto text = Json::string(object, key);
    return text && text->isEmpty() ? std::nullopt : text;
}

} // namespace

std::optional<OllamaChunk> OllamaChunk::parse(QByteArrayView line)
{
    const auto object = LineJson::parseObject(line.trimmed());
    if (!object)
        return std::nullopt;
    const QJsonObject message = object->value("message"_L1).toObject();
    OllamaChunk chunk;
    chunk.text = message.value("content"_L1).toString();
    chunk.toolCalls = toolCallsOf(message);
    chunk.done = Json::boolean(*object, "done"_L1).value_or(false);
    chunk.doneReason = words(*object, "done_reason"_L1);
    chunk.errorMessage = words(*object, "error"_L1);
    chunk.isThinking = words(message, "thinking"_L1).has_value();
    return chunk;
}

} // namespace morvane
