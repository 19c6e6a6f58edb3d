#pragma once

#include <QCoroTask>
#include <QString>

#include <optional>
#include <stop_token>

namespace morvane {

// Reads replies aloud. GUI thread.
class SpeechOutputting {
public:
    virtual ~SpeechOutputting() = default;

    // Ends when the speech has ended or was stopped; what still sounds is stopped first. `rate` runs from 0,
    // slowest, to 1. Throws AudioError when no sound can be played.
    [[nodiscard]] virtual QCoro::Task<> speak(QString text, std::optional<QString> voice, double rate,
                                              bool speakCodeBlocks, std::stop_token stop) = 0;
    virtual void stop() = 0;
};

} // namespace morvane
