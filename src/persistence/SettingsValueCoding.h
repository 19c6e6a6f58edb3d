#pragma once

#include "persistence/SettingsRepository.h"

namespace morvane {

// Settings as text that keeps their type: the type's name, a colon and the value.
//
//     bool:true   int:5   real:0.7   text:5   data:(base64)   list:["a","b"]
namespace SettingsValueCoding {

[[nodiscard]] QString encode(const SettingsValue &value);

// Nothing for a text that `encode` could not have written, apart from other ways to write the same number.
[[nodiscard]] std::optional<SettingsValue> decode(const QString &text);

} // namespace SettingsValueCoding

} // namespace morvane
