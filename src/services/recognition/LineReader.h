#pragma once

#include "services/TextObservation.h"
#include "services/recognition/InkPicture.h"

#include <functional>
#include <memory>
#include <string>

namespace tesseract {
class TessBaseAPI;
}

namespace morvane {

// Finds the lines of text on a screen. Opens files (the language data) only as it is made.
class LineReader {
public:
    // The codes of languages, joined by "+"; those that aren't installed are left out.
    explicit LineReader(const std::string &languages);
    ~LineReader();
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    // False when no language is installed that was asked for.
    [[nodiscard]] bool isReady() const { return m_engine != nullptr; }

    using Found = std::function<void(const TextObservation &)>;
    // `pixelsPerPoint` as in ScreenPicture. False when the recogniser fails.
    [[nodiscard]] bool read(const ScreenPixels &screen, double pixelsPerPoint, const Found &found);

private:
    std::unique_ptr<tesseract::TessBaseAPI> m_engine;
};

} // namespace morvane
