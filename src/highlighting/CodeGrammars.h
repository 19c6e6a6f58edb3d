#pragma once

#include "highlighting/CodeGrammar.h"

namespace morvane {

namespace CodeGrammars {

// Those of the languages that people paste most, HTML's without its tags.
[[nodiscard]] const QList<CodeGrammar> &all();

} // namespace CodeGrammars

} // namespace morvane
