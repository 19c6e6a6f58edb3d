#include "ai/private_cloud/ToolBlock.h"

#include "utils/text/Json.h"
#include "utils/text/Text.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView fence = u"```";

QStringView withoutFence(QStringView text)
{
    if (!text.startsWith(fence))
        return text;
    const qsizetype line = text.indexOf(u'\n');
    text = line < 0 ? QStringView() : text.sliced(line + 1);
    const qsizetype end = text.indexOf(fence);
    return end < 0 ? text : text.first(end);
}

std::optional<QJsonObject> objectIn(QStringView text)
{
    const qsizetype first = text.indexOf(u'{');
    const qsizetype last = text.lastIndexOf(u'}');
    if (first < 0 || last < first)
        return std::nullopt;
    return Json::parseObject(text.sliced(first, last - first + 1).toUtf8());
}

std::vector<QJsonObject> entriesOf(const QJsonObject &block)
{
    if (auto calls = Json::objects(block, "calls"_L1))
        return *std::move(calls);
    if (Json::string(block, "name"_L1))
        return {block};
    return {};
}

QString argumentsOf(const QJsonObject &entry)
{
    const auto stated = Json::object(entry, "arguments"_L1);
    const QJsonObject arguments =
        stated ? *stated : Json::object(entry, "parameters"_L1).value_or(QJsonObject());
    return QString::fromUtf8(QJsonDocument(arguments).toJson(QJsonDocument::Compact));
}

} // namespace

std::vector<AIToolCall> ToolBlock::parseToolCalls(const QString &text, const QString &idPrefix)
{
    const QString trimmed = Text::trimmed(text);
    const std::optional<QJsonObject> block = objectIn(withoutFence(trimmed));
    std::vector<AIToolCall> calls;
    if (!block)
        return calls;
    int number = 0;
    for (const QJsonObject &entry : entriesOf(*block)) {
        const QString name = Json::string(entry, "name"_L1).value_or(QString());
        if (!name.isEmpty())
            calls.push_back({idPrefix + u'-' + QString::number(number), name, argumentsOf(entry)});
        ++number;
    }
    return calls;
}

} // namespace morvane
