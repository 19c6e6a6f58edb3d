#pragma once

#include <QString>

#include <optional>

namespace morvane {

// What the first bytes of a model file of whisper.cpp tell.
struct WhisperModel {
    bool knowsManyLanguages = false; // else English alone

    // Nothing for a file that can't be read or is no such model. What is no regular file is never opened. May
    // wait for the disk; any thread.
    [[nodiscard]] static std::optional<WhisperModel> read(const QString &path);

    bool operator==(const WhisperModel &) const = default;
};

} // namespace morvane
