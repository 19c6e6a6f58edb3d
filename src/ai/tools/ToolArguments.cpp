#include "ai/tools/ToolArguments.h"

#include "utils/text/Json.h"

#include <QLocale>

#include <cmath>

namespace morvane {

ToolArguments::ToolArguments(const QString &json)
    : m_values(Json::parseObject(json.toUtf8()).value_or(QJsonObject()))
{}

std::optional<QString> ToolArguments::text(QLatin1StringView name) const
{
    if (auto text = Json::string(m_values, name))
        return text;
    if (const auto integer = Json::integer(m_values, name))
        return QString::number(*integer);
    if (const auto number = Json::number(m_values, name))
        return QString::number(*number, 'g', QLocale::FloatingPointShortest);
    return std::nullopt;
}

std::optional<double> ToolArguments::number(QLatin1StringView name) const
{
    std::optional<double> number = Json::number(m_values, name);
    if (const auto text = Json::string(m_values, name)) {
        bool isNumber = false;
        const double value = text->toDouble(&isNumber);
        if (isNumber)
            number = value;
    }
    return number && std::isfinite(*number) ? number : std::nullopt;
}

} // namespace morvane
