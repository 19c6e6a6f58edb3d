#pragma once

#include "services/ScreenPicture.h"
#include "services/TextObservation.h"

#include <QStringList>

#include <stop_token>
#include <vector>

namespace morvane {

// The process that reads one picture for us, from its start to its end.
namespace ScreenReadingProcess {

struct Request {
    QString program;
    QStringList languages;
};

// Waits for the answer; for a thread of Work. Whatever the process does (crashes, says what it may not, says
// too much, isn't there) comes out as std::runtime_error. Throws CancelledError when `stop` is triggered,
// with the process ended.
[[nodiscard]] std::vector<TextObservation> run(const Request &request, const ScreenPicture &picture,
                                               const std::stop_token &stop);

} // namespace ScreenReadingProcess

} // namespace morvane
