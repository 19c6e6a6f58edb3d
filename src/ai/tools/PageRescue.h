#pragma once

#include "ai/tools/ToolOutcome.h"
#include "ai/tools/TurnContext.h"

#include <QCoroTask>

#include <memory>
#include <optional>
#include <stop_token>

namespace morvane {

class WebAccessing;

// What a turn gets in place of a page that could not be read.
namespace PageRescue {

// The search that stands in for a page: its words from the address, if it has any. Only for a turn whose chat
// allows searches; a failed read never sends a new query on its own.
[[nodiscard]] std::optional<QString> query(const QString &address);

// `problem` is why the page could not be read. With a `query`, its results come along when there are any;
// otherwise the model is told to search.
[[nodiscard]] QCoro::Task<ToolOutcome> outcome(QString problem, std::optional<QString> query,
                                               std::shared_ptr<TurnContext> turn, WebAccessing *web,
                                               std::stop_token stop);

} // namespace PageRescue

} // namespace morvane
