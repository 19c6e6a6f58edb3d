#pragma once

#include "documents/ExtractionFrames.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <stdexcept>
#include <stop_token>
#include <utility>
#include <vector>

namespace morvane {

// A process of ours that reads one hostile thing for us, from its start to its end.
namespace ConfinedProcess {

struct Request {
    QString program;
    QStringList arguments;
    QByteArray input;                                          // for its standard input, unless that is
    int standardInput = -1;                                    // a descriptor of ours
    qsizetype longestReply;                                    // bytes
    std::vector<std::pair<QString, QString>> environment = {}; // besides where its libraries are
};

// What the process did that it may not: it crashed, said too much, broke off, or isn't there.
struct Broken : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using OnFrame = std::function<void(const ExtractionFrames::Frame &)>;

// Waits for the answer; for a thread of Work. `onFrame` gets each frame but the last, which says that nothing
// comes behind it; what it throws ends the process and goes on to the caller. Throws Broken, and
// CancelledError when `stop` is triggered, with the process ended.
void run(const Request &request, const OnFrame &onFrame, const std::stop_token &stop);

} // namespace ConfinedProcess

} // namespace morvane
