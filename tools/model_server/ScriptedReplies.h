#pragma once

#include "loopback/Exchange.h"

namespace morvane {

// Plays an answer of a scenario file. README.md describes the file.
namespace ScriptedReplies {

Work play(Exchange &exchange, QJsonObject answer);

} // namespace ScriptedReplies

} // namespace morvane
