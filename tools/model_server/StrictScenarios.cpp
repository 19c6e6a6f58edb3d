// Services that refuse part of a request that others take, each in its own words. Those are the ones that
// real services answer with.

#include "OllamaObjects.h"
#include "Reply.h"
#include "Scenarios.h"

#include <QJsonArray>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QJsonArray messagesOf(const Request &request)
{
    return request.json["messages"_L1].toArray();
}

QString roleOf(const QJsonValue &message)
{
    return message["role"_L1].toString();
}

// Replies unless the request holds what is refused.
Work unless(Exchange &exchange, bool isRefused, int status, QJsonObject error)
{
    if (isRefused)
        co_await exchange.respondJson(status, std::move(error));
    else
        co_await Scenarios::find(u"practice-fast"_s)->play(exchange);
}

QJsonObject invalid(const QString &message, const QString &parameter = {}, const QString &code = {})
{
    const auto orNull = [](const QString &text) { return text.isEmpty() ? QJsonValue() : QJsonValue(text); };
    const QJsonObject error{{u"message"_s, message},
                            {u"type"_s, u"invalid_request_error"_s},
                            {u"param"_s, orNull(parameter)},
                            {u"code"_s, orNull(code)}};
    return {{u"error"_s, error}};
}

// An object that names the field, as services do that check a request against a schema.
QJsonObject schemaError(const QString &type, const QJsonArray &place, const QString &words)
{
    const QJsonObject detail{{u"type"_s, type}, {u"loc"_s, place}, {u"msg"_s, words}};
    const QJsonObject message{{u"detail"_s, QJsonArray{detail}}};
    return {{u"object"_s, u"error"_s},
            {u"message"_s, message},
            {u"type"_s, u"invalid_request_error"_s},
            {u"code"_s, QJsonValue()}};
}

bool hasPurpose(const Request &request)
{
    return request.json.contains("purpose"_L1);
}

QJsonObject unknownPurpose()
{
    return invalid(u"Unrecognized request argument supplied: purpose"_s);
}

Work purposeUnknown(Exchange &exchange)
{
    const bool isRefused = hasPurpose(exchange.request());
    QJsonObject error = unknownPurpose();
    co_await unless(exchange, isRefused, 400, std::move(error));
}

Work purposeExtra(Exchange &exchange)
{
    const bool has = hasPurpose(exchange.request());
    const QJsonArray place{u"body"_s, u"purpose"_s};
    QJsonObject error = schemaError(u"extra_forbidden"_s, place, u"Extra inputs are not permitted"_s);
    co_await unless(exchange, has, 422, std::move(error));
}

Work completionTokens(Exchange &exchange)
{
    const bool has = exchange.request().json.contains("max_tokens"_L1);
    QJsonObject error = invalid(u"Unsupported parameter: 'max_tokens' is not supported with this model. Use "
                                "'max_completion_tokens' instead."_s,
                                u"max_tokens"_s, u"unsupported_parameter"_s);
    co_await unless(exchange, has, 400, std::move(error));
}

Work fixedTemperature(Exchange &exchange)
{
    const QJsonValue temperature = exchange.request().json["temperature"_L1];
    const bool isOther = !temperature.isUndefined() && temperature.toDouble() != 1;
    QJsonObject error =
        invalid(u"Unsupported value: 'temperature' does not support %1 with this model. Only the "
                "default (1) value is supported."_s.arg(temperature.toDouble()),
                u"temperature"_s, u"unsupported_value"_s);
    co_await unless(exchange, isOther, 400, std::move(error));
}

bool hasLaterSystem(const Request &request)
{
    const QJsonArray messages = messagesOf(request);
    bool isLater = false;
    for (qsizetype i = 1; i < messages.size(); ++i)
        isLater = isLater || roleOf(messages[i]) == "system"_L1;
    return isLater;
}

const QString systemFirst = u"System message must be at the beginning."_s;

Work oneSystemMessage(Exchange &exchange)
{
    const bool isRefused = hasLaterSystem(exchange.request());
    QJsonObject error = invalid(systemFirst);
    co_await unless(exchange, isRefused, 400, std::move(error));
}

Work userFirst(Exchange &exchange)
{
    QString first;
    for (const QJsonValue message : messagesOf(exchange.request())) {
        if (first.isEmpty() && roleOf(message) != "system"_L1)
            first = roleOf(message);
    }
    QJsonObject error = invalid(u"After the optional system message, conversation roles must alternate "
                                "user/assistant/user/assistant/..."_s);
    co_await unless(exchange, first != "user"_L1, 400, std::move(error));
}

// The first call comes, as agent-search makes it; what comes back must have words beside the call.
Work contentBesideCalls(Exchange &exchange)
{
    bool isMissing = false;
    for (const QJsonValue message : messagesOf(exchange.request()))
        isMissing =
            isMissing || (!message["tool_calls"_L1].isUndefined() && !message["content"_L1].isString());
    if (isMissing) {
        const QJsonArray place{u"body"_s, u"messages"_s, u"content"_s};
        co_await exchange.respondJson(
            422, schemaError(u"string_type"_s, place, u"Input should be a valid string"_s));
        co_return;
    }
    co_await Scenarios::find(u"tool-call-whole"_s)->play(exchange);
}

QJsonObject serverError(const QString &message)
{
    const QJsonObject error{{u"code"_s, 500}, {u"message"_s, message}, {u"type"_s, u"server_error"_s}};
    return {{u"error"_s, error}};
}

Work toolsNeedFlag(Exchange &exchange)
{
    QJsonObject error = serverError(u"tools param requires --jinja flag"_s);
    co_await unless(exchange, exchange.request().offersTools(), 500, std::move(error));
}

Work toolsNeedWhole(Exchange &exchange)
{
    const Request &request = exchange.request();
    QJsonObject error = serverError(u"Cannot use tools with stream"_s);
    co_await unless(exchange, request.offersTools() && request.wantsStream(), 500, std::move(error));
}

Work contextFull(Exchange &exchange)
{
    if (exchange.request().isOllama()) {
        QJsonObject told =
            OllamaObjects::error(u"prompt too long; exceeded max context length by 4904 tokens"_s);
        co_await exchange.respondJson(400, std::move(told));
        co_return;
    }
    const QJsonObject error{
        {u"code"_s, 400},
        {u"message"_s, u"the request exceeds the available context size, try increasing it"_s},
        {u"type"_s, u"exceed_context_size_error"_s},
        {u"n_prompt_tokens"_s, 9000},
        {u"n_ctx"_s, 4096}};
    const QJsonObject body{{u"error"_s, error}};
    co_await exchange.respondJson(400, body);
}

Work contextLength(Exchange &exchange)
{
    const QJsonObject error = invalid(
        u"This model's maximum context length is 8192 tokens. However, your messages resulted in 9000 "
        "tokens. Please reduce the length of the messages."_s,
        u"messages"_s, u"context_length_exceeded"_s);
    co_await exchange.respondJson(400, error);
}

std::optional<Refusal> refusedByCloud(const Request &request)
{
    if (hasPurpose(request))
        return Refusal{400, unknownPurpose()};
    if (hasLaterSystem(request))
        return Refusal{400, invalid(systemFirst)};
    if (request.hasImages())
        return Refusal{400,
                       invalid(u"Invalid content type. image_url is only supported by certain models."_s)};
    return std::nullopt;
}

std::optional<Refusal> refusedByLlama(const Request &request)
{
    if (hasLaterSystem(request))
        return Refusal{500, serverError(systemFirst)};
    if (request.hasImages())
        return Refusal{500,
                       serverError(u"image input is not supported - hint: if this is unexpected, you may "
                                   "need to provide the mmproj"_s)};
    return std::nullopt;
}

} // namespace

std::optional<Refusal> Scenarios::refusal(const QString &manner, const Request &request)
{
    return manner == "cloud"_L1   ? refusedByCloud(request)
           : manner == "llama"_L1 ? refusedByLlama(request)
                                  : std::nullopt;
}

std::span<const Scenario> Scenarios::strict()
{
    static constexpr Scenario all[]{
        {"strict-purpose"_L1, "HTTP 400 when the request has a purpose"_L1, purposeUnknown},
        {"strict-purpose-schema"_L1, "HTTP 422 for the same, as a schema's error"_L1, purposeExtra},
        {"strict-tokens"_L1, "HTTP 400 for max_tokens; takes max_completion_tokens"_L1, completionTokens},
        {"strict-temperature"_L1, "HTTP 400 for a temperature other than 1"_L1, fixedTemperature},
        {"strict-system"_L1, "HTTP 400 for a system message behind the first message"_L1, oneSystemMessage},
        {"strict-turns"_L1, "HTTP 400 when the user's words don't come first"_L1, userFirst},
        {"strict-content"_L1, "HTTP 422 for a tool call without content beside it; calls a tool"_L1,
         contentBesideCalls},
        {"tools-need-flag"_L1, "HTTP 500 when tools are offered: the server was started without them"_L1,
         toolsNeedFlag},
        {"tools-need-whole"_L1, "HTTP 500 when tools are offered with a stream"_L1, toolsNeedWhole},
        {"context-full"_L1, "HTTP 400: the chat is longer than the context"_L1, contextFull},
        {"context-length"_L1, "the same in another service's words"_L1, contextLength},
    };
    return all;
}

} // namespace morvane
