#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morvane {

// A tool that a model may call, as it is described to the model and to the user.
struct AITool {
    struct Parameter {
        enum class Kind { string, number, boolean };

        QString name;
        Kind kind = Kind::string;
        QString description;
        bool required = false;
        QStringList allowedValues; // empty: any value of the kind

        bool operator==(const Parameter &) const = default;
    };

    // Safe tools have none; the others name what the user is asked to approve.
    struct Risk {
        std::optional<QString> approvalVerb;

        bool operator==(const Risk &) const = default;
    };

    QString name; // on the wire
    QString description;
    std::vector<Parameter> parameters; // in declaration order
    Risk risk;
    QString displayName;
    QString userDescription;

    bool operator==(const AITool &) const = default;
};

// What a model is told of a parameter's kind: the names of JSON Schema.
[[nodiscard]] inline QString schemaName(AITool::Parameter::Kind kind)
{
    switch (kind) {
    case AITool::Parameter::Kind::string:
        return QStringLiteral("string");
    case AITool::Parameter::Kind::number:
        return QStringLiteral("number");
    case AITool::Parameter::Kind::boolean:
        return QStringLiteral("boolean");
    }
    return {};
}

// The user's answer to an approval card.
enum class ApprovalAnswer { declined, allowedOnce, allowedForChat };

} // namespace morvane
