#pragma once

#include <QString>

namespace morvane {

// What can be read off the name of a model.
namespace ModelName {

// How a model is named to a person: without its tag, its family capitalised. "llama3.2:3b" is "Llama3.2".
[[nodiscard]] QString shortName(const QString &model);

// An Ollama server passes a model of this name on to Ollama's own service: its tag is "cloud" or ends with
// "-cloud".
[[nodiscard]] bool isOllamaCloud(const QString &model);

// Billions of parameters, as in "qwen2.5:7b"; 0 when the name doesn't tell.
[[nodiscard]] double parameterCount(const QString &model);

// Both name the same model of an Ollama server, where a name without a tag means the tag "latest".
[[nodiscard]] bool isSame(const QString &left, const QString &right);

} // namespace ModelName

} // namespace morvane
