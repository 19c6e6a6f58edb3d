#pragma once

#include <QString>

#include <span>

namespace morvane {

// What the practice runtime plays, by the name in its folder.
namespace RuntimeScenarios {

struct Kind {
    QLatin1StringView name;
    QLatin1StringView summary;
};

[[nodiscard]] std::span<const Kind> kinds();
[[nodiscard]] bool has(const QString &name);

} // namespace RuntimeScenarios

} // namespace morvane
