#include "loopback/Request.h"

#include <QJsonArray>
#include <QUrl>
#include <QUrlQuery>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A message's text; with images it is the first text part.
QString textOf(const QJsonValue &content)
{
    if (content.isString())
        return content.toString();
    for (const QJsonValue part : content.toArray()) {
        if (part["type"_L1].toString() == "text"_L1)
            return part["text"_L1].toString();
    }
    return {};
}

} // namespace

QByteArray Request::path() const
{
    const qsizetype query = target.indexOf('?');
    return query < 0 ? target : target.first(query);
}

QString Request::query(const QString &name) const
{
    return QUrlQuery(QUrl::fromEncoded(target)).queryItemValue(name, QUrl::FullyDecoded);
}

std::optional<QByteArray> Request::header(QByteArrayView name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return std::nullopt;
}

QString Request::model() const
{
    return json.value("model"_L1).toString();
}

bool Request::isOllama() const
{
    return target.contains("/api/");
}

bool Request::wantsStream() const
{
    return json.value("stream"_L1).toBool(isOllama());
}

bool Request::offersTools() const
{
    return !json.value("tools"_L1).toArray().isEmpty();
}

bool Request::asksForThinking() const
{
    const QJsonValue think = json.value("think"_L1);
    return think.toBool() || !think.toString().isEmpty();
}

bool Request::hasImages() const
{
    for (const QJsonValue message : json.value("messages"_L1).toArray()) {
        if (!message["images"_L1].toArray().isEmpty() || message["content"_L1].isArray())
            return true;
    }
    return false;
}

QJsonObject Request::lastMessage() const
{
    return json.value("messages"_L1).toArray().last().toObject();
}

QString Request::lastUserText() const
{
    const QJsonArray messages = json.value("messages"_L1).toArray();
    for (qsizetype i = messages.size(); i-- > 0;) {
        if (messages.at(i)["role"_L1].toString() == "user"_L1)
            return textOf(messages.at(i)["content"_L1]);
    }
    return {};
}

} // namespace morvane
