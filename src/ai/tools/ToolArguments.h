#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace morvane {

// The arguments of one call. Models write what they like, so a text may stand as a number and the other way
// round; whatever reads as neither is absent, and a text that is no JSON object holds nothing.
class ToolArguments {
public:
    explicit ToolArguments(const QString &json);

    [[nodiscard]] std::optional<QString> text(QLatin1StringView name) const;

    // Finite.
    [[nodiscard]] std::optional<double> number(QLatin1StringView name) const;

private:
    QJsonObject m_values;
};

} // namespace morvane
