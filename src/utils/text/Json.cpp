#include "utils/text/Json.h"

#include <QJsonDocument>
#include <QJsonValue>

namespace morvane {

std::optional<QJsonObject> Json::parseObject(QByteArrayView utf8)
{
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(QByteArray::fromRawData(utf8.data(), utf8.size()), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

std::optional<QString> Json::string(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<bool> Json::boolean(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<double> Json::number(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<std::int64_t> Json::integer(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    if (!value.isDouble())
        return std::nullopt;
    // toInteger() yields its default for a value that is not integral; two defaults tell that apart.
    const qint64 first = value.toInteger(0);
    return first == value.toInteger(1) ? std::optional<std::int64_t>(first) : std::nullopt;
}

std::optional<QJsonObject> Json::object(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    return value.isObject() ? std::optional(value.toObject()) : std::nullopt;
}

std::optional<QJsonArray> Json::array(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    return value.isArray() ? std::optional(value.toArray()) : std::nullopt;
}

std::optional<std::vector<QJsonObject>> Json::objects(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = object.value(key);
    if (!value.isArray())
        return std::nullopt;
    const auto elements = value.toArray();
    std::vector<QJsonObject> result;
    result.reserve(static_cast<std::size_t>(elements.size()));
    for (const auto &element : elements) {
        if (!element.isObject())
            return std::nullopt;
        result.push_back(element.toObject());
    }
    return result;
}

} // namespace morvane
