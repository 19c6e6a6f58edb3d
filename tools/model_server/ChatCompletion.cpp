#include "ChatCompletion.h"

#include <QDateTime>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QJsonObject envelope(const QString &kind, const QString &model, QJsonObject choice,
                     const QString &finishReason)
{
    choice.insert(u"index"_s, 0);
    choice.insert(u"finish_reason"_s, finishReason.isEmpty() ? QJsonValue() : QJsonValue(finishReason));
    return {{u"id"_s, u"chatcmpl-practice"_s},
            {u"object"_s, kind},
            {u"created"_s, QDateTime::currentSecsSinceEpoch()},
            {u"model"_s, model},
            {u"choices"_s, QJsonArray{choice}}};
}

} // namespace

QJsonObject ChatCompletion::chunk(const QString &model, const QJsonObject &delta, const QString &finishReason)
{
    return envelope(u"chat.completion.chunk"_s, model, {{u"delta"_s, delta}}, finishReason);
}

QJsonObject ChatCompletion::textChunk(const QString &model, const QString &text)
{
    return chunk(model, {{u"content"_s, text}});
}

QJsonObject ChatCompletion::completion(const QString &model, const QJsonObject &message,
                                       const QString &finishReason)
{
    return envelope(u"chat.completion"_s, model, {{u"message"_s, message}}, finishReason);
}

QJsonObject ChatCompletion::error(const QString &message, int status)
{
    return {{u"error"_s,
             QJsonObject{{u"message"_s, message}, {u"type"_s, u"practice_error"_s}, {u"code"_s, status}}}};
}

QJsonObject ChatCompletion::toolCall(const QString &id, const QString &name, const QString &arguments)
{
    QJsonObject call{{u"type"_s, u"function"_s},
                     {u"function"_s, QJsonObject{{u"name"_s, name}, {u"arguments"_s, arguments}}}};
    if (!id.isEmpty())
        call.insert(u"id"_s, id);
    return call;
}

} // namespace morvane
