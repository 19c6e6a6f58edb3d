#pragma once

#include <QLocale>
#include <QString>

#include <optional>

namespace morvane {

// The languages that a model of many languages was trained on.
namespace WhisperLanguages {

inline constexpr int count = 99;

// As a request names it; nothing for a language that the model doesn't know. A session without a language of
// its own is taken for English.
[[nodiscard]] std::optional<QString> codeOf(const QLocale &locale);

} // namespace WhisperLanguages

} // namespace morvane
