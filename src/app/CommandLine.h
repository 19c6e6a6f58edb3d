#pragma once

#include "ai/local/LocalRuntimeValues.h"
#include "ai/routing/DevRelay.h"
#include "utils/files/SupportFolders.h"
#include "view_models/AppRequest.h"

#include <QStringList>

#include <optional>

namespace morvane {

// What the program was started with.
struct CommandLine {
    bool resetOnboarding = false;          // forgets that the welcome flow was seen
    bool simulateFreshSetup = false;       // the local model's service finds nothing installed
    std::optional<QString> profile;        // a folder that takes the place of every XDG folder
    std::optional<QString> practiceServer; // where to chat and to search, in a profile of its own
    bool practiceTour = false;          // with that server: chats to look at, and a model that shows things
    std::optional<QString> demoPicture; // plays one turn, saves the window there and ends
    std::optional<DevRelay::Origin> devRelay; // takes the place of the deployment's relay, where that has one
    std::optional<LocalRuntimeValues> devRuntime; // as the relay: only in a deployment that has one
    bool background = false;                      // begins in the tray, with no window
    AppRequest request = {};                      // carried out by the program that runs already, if one does

    [[nodiscard]] SupportFolders folders() const;

    // Ends the program with a message for unknown arguments, --help and --version.
    [[nodiscard]] static CommandLine parse(const QStringList &arguments);
};

} // namespace morvane
