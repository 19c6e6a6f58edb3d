#pragma once

#include <QCoroTask>
#include <QUrl>

#include <stop_token>

namespace morvane {

// Hands something to the program that the person has for it. GUI thread.
class LinkOpening {
public:
    enum class Outcome {
        opened,
        failed,
        dismissed, // the desktop asked the person which program to use, and got none
    };

    virtual ~LinkOpening() = default;

    // An address of the web, of mail or of a file or a folder on this machine. Throws CancelledError.
    [[nodiscard]] virtual QCoro::Task<Outcome> open(QUrl address, std::stop_token stop) = 0;
};

} // namespace morvane
