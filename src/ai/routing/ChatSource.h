#pragma once

#include <QString>

namespace morvane {

// The place that the settings point at for replies.
struct ChatSource {
    enum class Kind {
        morvaneCloud,  // the private cloud
        customCloud,   // a service on the internet
        ollamaCloud,   // a cloud model that a local server passes on
        thisMac,       // a model on this computer
        network,       // a server on the local network
        notConfigured, // nothing is set up
    };

    Kind kind = Kind::notConfigured;
    QString host;  // as it is shown; customCloud and network
    QString model; // as it is configured; ollamaCloud, thisMac and network

    bool operator==(const ChatSource &) const = default;

    // The source of a base address and a model. Never the private cloud: that is chosen by a setting.
    [[nodiscard]] static ChatSource of(const QString &baseURLString, const QString &model);

    // What the status line shows.
    [[nodiscard]] QString label() const;

    // What becomes of a message, in a few words.
    [[nodiscard]] QString destination() const;

    // Where replies run while the private cloud is off: "on this Mac", …
    [[nodiscard]] QString whereRepliesRun() const;
};

} // namespace morvane
