#pragma once

#include "ai/tools/AbilityCatalogue.h"
#include "ai/tools/ToolArguments.h"
#include "ai/tools/ToolOutcome.h"
#include "ai/tools/TurnContext.h"

#include <QCoroTask>
#include <QDateTime>

#include <memory>
#include <stop_token>

namespace morvane {

class DesktopActing;
class MemoryStore;
class ScreenGlancing;
class WebAccessing;

// Carries out calls that have passed their gate.
namespace ToolRunner {

// Not owned. They are called before a run first suspends; what it does afterwards touches only the turn.
struct Services {
    MemoryStore *memory;
    WebAccessing *web;
    DesktopActing *desktop; // may be null
    std::weak_ptr<ScreenGlancing> screenGlance;
    QDateTime asked; // when the call was made, which its times count from: a yes may come minutes later
    qsizetype screenTextLimit; // characters
};

// What went out or came in is marked in `turn`. Throws what the services throw.
[[nodiscard]] QCoro::Task<ToolOutcome> run(Ability ability, ToolArguments arguments,
                                           std::shared_ptr<TurnContext> turn, Services services,
                                           std::stop_token stop);

} // namespace ToolRunner

} // namespace morvane
