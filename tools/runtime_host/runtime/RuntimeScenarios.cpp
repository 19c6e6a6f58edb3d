#include "RuntimeScenarios.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr RuntimeScenarios::Kind all[]{
    {"good"_L1, "serves, pulls and answers"_L1},
    {"slow-start"_L1, "listens two seconds after it was started"_L1},
    {"never-listens"_L1, "runs and listens nowhere"_L1},
    {"dies-at-start"_L1, "ends at once with status 1"_L1},
    {"dies-after-start"_L1, "ends behind its first answer"_L1},
    {"third-probe"_L1, "answers the first two requests for its models with 503"_L1},
    {"all-interfaces"_L1, "listens on every address, whatever it was told"_L1},
    {"stubborn"_L1, "heeds no signal that can be ignored"_L1},
    {"runner"_L1, "answers a chat with a process of its own beside it"_L1},
    {"talkative"_L1, "writes what the person said to its standard error"_L1},
    {"changed-digest"_L1, "lists its models with other digests than before"_L1},
    {"lost-key"_L1, "makes no identity key"_L1},
    {"lost-key-once"_L1, "makes no identity key in its first run"_L1},
    {"pull-error"_L1, "a pull ends in an error line"_L1},
    {"pull-cut"_L1, "the connection of a pull ends half way"_L1},
    {"pull-held"_L1, "a pull waits half way for POST /go-on"_L1},
    {"pull-wrong-layer"_L1, "a layer turns out to be another than it should be"_L1},
    {"pull-lines"_L1, "a pull of more than 50,000 lines"_L1},
    {"pull-endless-line"_L1, "a pull whose line never ends"_L1},
    {"pull-slow"_L1, "a pull of some ten seconds, for people to look at"_L1},
};

} // namespace

std::span<const RuntimeScenarios::Kind> RuntimeScenarios::kinds()
{
    return all;
}

bool RuntimeScenarios::has(const QString &name)
{
    return std::ranges::any_of(all, [&name](const Kind &kind) { return kind.name == name; });
}

} // namespace morvane
