#pragma once

#include <QString>

#include <vector>

namespace morvane {

// Texts that try to take a reply over, to forge the frame they stand in, or to break what reads them.
struct HostileContent {
    const char *name;
    QString text;
};

[[nodiscard]] std::vector<HostileContent> hostileContents();

} // namespace morvane
