#pragma once

#include <QString>

namespace morvane {

// What a server's own words about a refused request name.
namespace RefusalWords {

enum class Subject {
    tools,   // that it takes none, or not so
    another, // a field, the model, a picture, a call that the model wrote badly
    nothing, // no words, or none that tell
};

[[nodiscard]] Subject subjectOf(const QString &words);

} // namespace RefusalWords

} // namespace morvane
