#include "ai/providers/OpenAIStreamParser.h"

#include "ai/providers/LineJson.h"
#include "ai/providers/ServerWords.h"
#include "utils/text/Json.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace OpenAIStreamParser {

namespace {

constexpr QByteArrayView prefix{"data:"};
constexpr QByteArrayView sentinel{"[DONE]"};
constexpr QByteArrayView bareError{"error:"}; // as some servers write it into a stream

[[noreturn]] void throwMalformed()
{
    throw ProviderError(ProviderError::Plain::malformedResponse);
}

// The first element of `choices`, which must hold objects only. Nothing for an empty list too.
std::optional<QJsonObject> firstChoice(const QJsonObject &object)
{
    const QJsonValue choices = object.value("choices"_L1);
    if (!choices.isArray())
        return std::nullopt;
    const QJsonArray list = choices.toArray();
    for (const QJsonValue choice : list) {
        if (!choice.isObject())
            return std::nullopt;
    }
    return list.isEmpty() ? std::nullopt : std::optional(list.first().toObject());
}

// Two names are in use for it.
bool hasReasoning(const QJsonObject &message)
{
    return !message["reasoning_content"_L1].toString().isEmpty() ||
           !message["reasoning"_L1].toString().isEmpty();
}

bool tellsOfError(const QJsonObject &object)
{
    const QJsonValue error = object["error"_L1];
    return error.isObject() || !error.toString().isEmpty();
}

Failed failureIn(const QJsonObject &object)
{
    const QJsonObject inner = object["error"_L1].toObject(object);
    const int status = inner["code"_L1].toInt(inner["status"_L1].toInt());
    return {status >= 400 && status <= 599 ? status : 0, ServerWords::of(object)};
}

Failed bareFailure(QByteArrayView words)
{
    const auto object = LineJson::parseObject(words);
    return object ? failureIn(*object)
                  : Failed{0, ServerWords::of(QJsonObject{{u"error"_s, QString::fromUtf8(words)}})};
}

ToolCallFragment fragment(const QJsonObject &entry, std::int64_t position)
{
    const auto function = entry.value("function"_L1).toObject();
    return {Json::integer(entry, "index"_L1).value_or(position), Json::string(entry, "id"_L1),
            Json::string(function, "name"_L1), Json::string(function, "arguments"_L1).value_or(QString())};
}

void appendFragments(std::vector<ToolAwareEvent> &events, const QJsonObject &source)
{
    const QJsonValue list = source.value("tool_calls"_L1);
    if (!list.isArray())
        return;
    if (static_cast<std::size_t>(list.toArray().size()) > mostToolCalls)
        throw ProviderError(ProviderError::Plain::tooManyCalls);
    const auto entries = Json::objects(source, "tool_calls"_L1);
    if (!entries)
        return;
    for (std::size_t position = 0; position < entries->size(); ++position)
        events.emplace_back(fragment((*entries)[position], static_cast<std::int64_t>(position)));
}

// A call of a whole body; nothing for an entry that names no function.
std::optional<AIToolCall> call(const QJsonObject &entry, std::size_t position)
{
    const auto function = Json::object(entry, "function"_L1);
    const auto name = function ? Json::string(*function, "name"_L1) : std::nullopt;
    if (!name)
        return std::nullopt;
    QString arguments = Json::string(*function, "arguments"_L1).value_or(QString());
    if (arguments.isEmpty())
        arguments = u"{}"_s;
    auto id = Json::string(entry, "id"_L1);
    return AIToolCall{id && !id->isEmpty() ? *id : u"call_%1"_s.arg(position), *name, arguments};
}

} // namespace

std::vector<ToolAwareEvent> classify(QByteArrayView line)
{
    line = Text::trimmedBlanks(line);
    if (line.startsWith(bareError))
        return {bareFailure(Text::trimmedBlanks(line.sliced(bareError.size())))};
    if (!line.startsWith(prefix))
        return {Ignored{}};
    const QByteArrayView payload = Text::trimmedBlanks(line.sliced(prefix.size()));
    if (payload == sentinel)
        return {Done{}};
    const auto object = LineJson::parseObject(payload);
    if (object && tellsOfError(*object))
        return {failureIn(*object)};
    const auto choice = object ? firstChoice(*object) : std::nullopt;
    if (!choice)
        return {Ignored{}};

    // Text falls through from the delta to a whole message; calls do so only when there is no delta at all.
    const QJsonValue delta = choice->value("delta"_L1);
    const QJsonObject source = delta.isObject() ? delta.toObject() : QJsonObject();
    std::vector<ToolAwareEvent> events;
    QJsonValue text = source.value("content"_L1);
    if (!text.isString())
        text = choice->value("message"_L1).toObject().value("content"_L1);
    if (QString piece = text.toString(); !piece.isEmpty())
        events.emplace_back(Delta{std::move(piece)});
    appendFragments(events, delta.isObject() ? source : choice->value("message"_L1).toObject());
    if (const QJsonValue reason = choice->value("finish_reason"_L1); reason.isString())
        events.emplace_back(Finished{reason.toString()});
    if (events.empty() && hasReasoning(source))
        events.emplace_back(Reasoned{});
    if (events.empty())
        events.emplace_back(Ignored{});
    return events;
}

std::optional<ProviderError::ReplyBroken> brokenBy(const QString &finishReason)
{
    if (finishReason == "error"_L1)
        return ProviderError::ReplyBroken::serverError;
    if (finishReason == "content_filter"_L1)
        return ProviderError::ReplyBroken::filtered;
    return std::nullopt;
}

Completion parseBody(QByteArrayView body)
{
    const auto object = Json::parseObject(body);
    if (object && !object->contains("choices"_L1) && tellsOfError(*object)) {
        const Failed failure = failureIn(*object);
        throw ServerWords::error(failure.status, failure.serverWords);
    }
    const auto choice = object ? firstChoice(*object) : std::nullopt;
    const auto message = choice ? Json::object(*choice, "message"_L1) : std::nullopt;
    if (!message)
        throwMalformed();

    Completion completion;
    const auto content = Json::string(*message, "content"_L1);
    completion.text = content.value_or(QString());
    completion.hasReasoning = hasReasoning(*message);
    const auto entries = Json::objects(*message, "tool_calls"_L1).value_or(std::vector<QJsonObject>());
    for (std::size_t position = 0; position < entries.size(); ++position) {
        if (auto made = call(entries[position], position))
            completion.toolCalls.push_back(std::move(*made));
    }
    completion.finishReason = Json::string(*choice, "finish_reason"_L1);
    if (const auto broken = brokenBy(completion.finishReason.value_or(QString()));
        broken && completion.isEmpty())
        throw ProviderError(*broken).quoting(failureIn(*choice).serverWords);
    if (completion.isEmpty() && !content && !completion.hasReasoning)
        throwMalformed();
    return completion;
}

} // namespace OpenAIStreamParser

} // namespace morvane
