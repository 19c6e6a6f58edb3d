#pragma once

#include "services/ScreenPicture.h"
#include "services/TextObservation.h"

#include <QCoroTask>

#include <memory>
#include <stop_token>
#include <vector>

namespace morvane {

// Reads the text in a picture. GUI thread; the work itself is elsewhere.
class TextRecognizing {
public:
    virtual ~TextRecognizing() = default;

    // In no particular order. Throws std::runtime_error when the picture can't be read.
    [[nodiscard]] virtual QCoro::Task<std::vector<TextObservation>>
    recognize(std::shared_ptr<const ScreenPicture> picture, std::stop_token stop) = 0;
};

} // namespace morvane
