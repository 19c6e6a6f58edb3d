#pragma once

#include "documents/DocumentImporting.h"
#include "documents/ExtractionFrames.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

namespace morvane {

// The process that reads one hostile file for us, from its start to its end.
namespace ExtractionProcess {

struct Request {
    QString program;
    QStringList arguments;
    QByteArray input;
};

struct Reply {
    QString text;
    PreparedPicture picture;
};

// Called a hundred times or so at most, however many pages there are.
using OnProgress = std::function<void(ExtractionFrames::Progress)>;

// Waits for the answer; for a thread of Work. Whatever the process does (crashes, says what it may not, says
// too much, isn't there) comes out as DocumentError `extractionFailed`, and what it says about the file as
// the case for it. Throws CancelledError when `stop` is triggered, with the process ended.
[[nodiscard]] Reply run(const Request &request, const OnProgress &onProgress, const std::stop_token &stop);

} // namespace ExtractionProcess

} // namespace morvane
