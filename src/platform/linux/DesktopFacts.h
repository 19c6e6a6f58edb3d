#pragma once

#include <QString>

#include <utility>
#include <vector>

namespace morvane {

// What a report of a problem says of the desktop the window stands on: no name of the machine or its person.
// Each is what, and how it is. GUI thread.
[[nodiscard]] std::vector<std::pair<QString, QString>> desktopFacts();

} // namespace morvane
