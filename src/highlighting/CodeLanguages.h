#pragma once

#include "highlighting/CodeLanguage.h"

namespace morvane {

namespace CodeLanguages {

// By any name that is written behind the opening marks of code: "python", "py", "C++", "js title=app.js".
// Null when the language isn't known. What is found lives as long as the program.
[[nodiscard]] const CodeLanguage *find(QStringView name);

} // namespace CodeLanguages

} // namespace morvane
