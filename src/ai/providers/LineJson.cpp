#include "ai/providers/LineJson.h"

#include "utils/text/Json.h"

namespace morvane {

std::optional<QJsonObject> LineJson::parseObject(QByteArrayView line)
{
    auto object = Json::parseObject(line);
    if (!object && !line.isValidUtf8())
        object = Json::parseObject(validUtf8(line));
    return object;
}

QByteArray LineJson::validUtf8(QByteArrayView bytes)
{
    return bytes.isValidUtf8() ? bytes.toByteArray() : QString::fromUtf8(bytes).toUtf8();
}

} // namespace morvane
