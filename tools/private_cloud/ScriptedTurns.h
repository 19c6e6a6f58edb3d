#pragma once

#include "Attestation.h"
#include "SealedTurn.h"

namespace morvane {

// Plays an answer of a scenario file. README.md describes the file.
namespace ScriptedTurns {

Work prove(Attestation &attestation, QJsonObject answer);
Work reply(SealedTurn &turn, QJsonObject answer);

} // namespace ScriptedTurns

} // namespace morvane
