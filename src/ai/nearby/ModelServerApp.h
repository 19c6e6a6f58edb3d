#pragma once

#include <QString>

#include <vector>

namespace morvane {

// What serves the models on another computer.
enum class ModelServerApp { ollama, lmStudio, other };

namespace ModelServerApps {

// "Ollama"; in the middle of a sentence.
[[nodiscard]] QString displayName(ModelServerApp app);

// Where it listens unless somebody said otherwise, in the order of trying.
[[nodiscard]] std::vector<int> ports(ModelServerApp app);

// What makes it answer other computers as well.
struct SetupSteps {
    QString instruction;
    QString command;   // to copy; empty for none
    QString otherwise; // where the command has nothing to act on; empty for none
    QString check;
};
[[nodiscard]] SetupSteps setupSteps(ModelServerApp app);

} // namespace ModelServerApps

} // namespace morvane
