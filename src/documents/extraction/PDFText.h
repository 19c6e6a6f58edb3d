#pragma once

#include "documents/ExtractionFrames.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace morvane {

// The words of a PDF. For a confined process: its reader is large and the format hostile.
namespace PDFText {

// Gives the text of each page that has some, and how many of the pages are read. Stops behind the page with
// which there are more than `limit` characters; more than a page's first `limit` + 1 are not given. Nothing,
// or why not.
[[nodiscard]] std::optional<ExtractionFrames::Failure>
read(QByteArray pdf, qsizetype limit, const std::function<void(const QString &text)> &page,
     const std::function<void(int done, int total)> &progress);

} // namespace PDFText

} // namespace morvane
