#include "OllamaObjects.h"

#include "ModelList.h"

#include <QDateTime>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

QJsonObject details()
{
    return {{u"parent_model"_s, QString()},   {u"format"_s, u"gguf"_s},
            {u"family"_s, u"practice"_s},     {u"families"_s, QJsonArray{u"practice"_s}},
            {u"parameter_size"_s, u"1.0B"_s}, {u"quantization_level"_s, u"Q4_K_M"_s}};
}

// A model that a service on the internet runs has these two in every place where it is described.
void insertPlace(QJsonObject &object, const ListedModel &model)
{
    if (model.remoteHost.isEmpty())
        return;
    object.insert(u"remote_model"_s, model.name);
    object.insert(u"remote_host"_s, model.remoteHost);
}

} // namespace

QJsonObject OllamaObjects::chunk(const QString &model, const QJsonObject &message)
{
    return {{u"model"_s, model}, {u"created_at"_s, now()}, {u"message"_s, message}, {u"done"_s, false}};
}

QJsonObject OllamaObjects::closing(const QString &model, const QString &doneReason,
                                   const QJsonObject &message)
{
    QJsonObject object = chunk(model, message.isEmpty() ? OllamaObjects::message({}) : message);
    object.insert(u"done"_s, true);
    object.insert(u"done_reason"_s, doneReason);
    object.insert(u"total_duration"_s, 812'345'678); // nanoseconds, as all durations here
    object.insert(u"load_duration"_s, 12'345'678);
    object.insert(u"prompt_eval_count"_s, 26);
    object.insert(u"prompt_eval_duration"_s, 130'079'000);
    object.insert(u"eval_count"_s, 259);
    object.insert(u"eval_duration"_s, 669'921'000);
    return object;
}

QJsonObject OllamaObjects::message(const QString &content)
{
    return {{u"role"_s, u"assistant"_s}, {u"content"_s, content}};
}

QJsonArray OllamaObjects::toolCalls(const QJsonArray &calls)
{
    QJsonArray list;
    for (const QJsonValue call : calls) {
        QJsonObject entry = call.toObject();
        QJsonObject function = call["function"_L1].toObject();
        const QByteArray arguments = function.value("arguments"_L1).toString().toUtf8();
        function.insert(u"arguments"_s, QJsonDocument::fromJson(arguments).object());
        entry.insert(u"function"_s, function);
        entry.remove("type"_L1);
        list.append(entry);
    }
    return list;
}

QJsonObject OllamaObjects::error(const QString &message)
{
    return {{u"error"_s, message}};
}

QJsonObject OllamaObjects::tag(const ListedModel &model)
{
    QJsonObject object{{u"name"_s, model.name}, {u"model"_s, model.name},      {u"modified_at"_s, now()},
                       {u"size"_s, model.size}, {u"digest"_s, model.digest()}, {u"details"_s, details()}};
    insertPlace(object, model);
    return object;
}

QJsonObject OllamaObjects::shown(const ListedModel &model)
{
    QJsonObject object{{u"modelfile"_s, u"# The practice server made this up.\nFROM practice\n"_s},
                       {u"parameters"_s, u"num_ctx 4096"_s},
                       {u"template"_s, u"{{ .Prompt }}"_s},
                       {u"details"_s, details()},
                       {u"model_info"_s, QJsonObject{{u"general.architecture"_s, u"practice"_s},
                                                     {u"general.parameter_count"_s, 1'000'000'000},
                                                     {u"tokenizer.ggml.tokens"_s, QJsonValue()}}},
                       {u"modified_at"_s, now()}};
    if (model.capabilities) // old versions don't tell
        object.insert(u"capabilities"_s, QJsonArray::fromStringList(*model.capabilities));
    insertPlace(object, model);
    return object;
}

} // namespace morvane
