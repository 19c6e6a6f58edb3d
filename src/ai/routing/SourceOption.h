#pragma once

#include "ai/routing/ChatSource.h"
#include "ai/routing/LocalModelServing.h"

#include <optional>
#include <vector>

namespace morvane {

// One entry of the menu in which the person picks where replies come from. An entry that can't run is listed
// as well, with the reason.
struct SourceOption {
    enum class Choice {
        privateCloud,
        local,      // the model on this machine
        configured, // the server or service that the settings name
    };

    Choice choice = Choice::local;
    ChatSource source;
    QString name;
    QString destination;            // what becomes of a message, in a few words
    bool isInUse = false;           // a message would go there now
    std::optional<QString> problem; // why it can't run, as a sentence

    bool operator==(const SourceOption &) const = default;

    // What decides about the entries.
    struct Facts {
        ChatSource active;
        ChatSource configured; // whatever the private cloud's switch says
        QString privateCloudName;
        bool knowsPrivateCloud = false; // this build has its address
        bool offersSealedChats = false; // the service says so
        LocalModelServing::State local{};
        QString model; // that the settings name
    };

    // Why the private cloud is off while the settings name a service on the internet.
    [[nodiscard]] static QString customServiceNotice();

    // In the order of the menu.
    [[nodiscard]] static std::vector<SourceOption> all(const Facts &facts);
};

} // namespace morvane
