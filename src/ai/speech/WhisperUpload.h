#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>

namespace morvane {

// What is asked of a whisper-server, and what it answers. Pure.
namespace WhisperUpload {

inline constexpr qsizetype longestAnswer = 0x10000; // bytes

// The form that holds the sound as a WAV file, with the language's code.
[[nodiscard]] QByteArray formOf(std::span<const std::int16_t> samples, const QString &language);

// The header that says how the form is parted.
[[nodiscard]] QByteArray contentType();

// Overwrites a form that was sent, wherever its bytes are shared.
void wipe(QByteArray &form);

// The words of an answer; nothing for one that holds an error or is none. What the model heard beside words,
// which it writes in brackets, is left out.
[[nodiscard]] std::optional<QString> wordsOf(const QByteArray &answer);

} // namespace WhisperUpload

} // namespace morvane
