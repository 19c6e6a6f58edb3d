#pragma once

#include "ai/contract/AITool.h"

#include <QStringView>

#include <optional>
#include <vector>

namespace morvane {

// The tools that a model may call, in the order in which they are offered.
enum class Ability {
    remember,
    forget,
    searchWeb,
    readWebPage,
    lookAtScreen,
    openLink,
    createCalendarEvent,
    runShortcut,
};

// Every ability that there is, as models and people read about it.
namespace AbilityCatalogue {

// Indexed by Ability.
[[nodiscard]] const std::vector<AITool> &all();

[[nodiscard]] const AITool &definition(Ability ability);

// By the name on the wire, spelled exactly.
[[nodiscard]] std::optional<Ability> named(QStringView name);

} // namespace AbilityCatalogue

} // namespace morvane
