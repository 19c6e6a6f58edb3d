#pragma once

#include <QString>

namespace morvane {

// What a line of a reply tells of an ability when it is opened.
struct ToolDetail {
    QString sent;               // in words; empty for an ability that is given nothing
    QString received;           // empty until it came
    bool isFromOutside = false; // the received text is a page's or a search's, or was read from the screen

    bool operator==(const ToolDetail &) const = default;
};

} // namespace morvane
