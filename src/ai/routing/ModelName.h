#pragma once

#include <QString>

namespace ModelName {

// How a model is named to a person: without its tag, its family capitalised. "llama3.2:3b" is "Llama3.2".
[[nodiscard]] QString shortName(const QString &model);

} // namespace ModelName
