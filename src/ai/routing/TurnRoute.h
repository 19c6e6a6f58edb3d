#pragma once

#include "ai/contract/AIConfiguration.h"
#include "ai/contract/AITool.h"
#include "ai/routing/PreparedRequest.h"

namespace morvane {

// A place that a turn may go to, and what may be sent there. Pure.
struct TurnRoute {
    enum class Place { configured, privateCloud, local };

    AIConfiguration configuration;
    Place place = Place::configured;
    bool hasVisionModel = false; // another model took the configured one's place, to see images
    PrivacyClass privacy;

    // What the turn asks of its model: another one, and the limit of its output.
    void apply(const TurnRequest &turn);

    // The place as windows and the ledger tell of it.
    [[nodiscard]] JudgedPlace judged() const;

    // Private data may be sent: by what is known of the place, and by the egress gate, which judges the text
    // of the host alone.
    [[nodiscard]] bool keepsDataPrivate() const;

    // A place on this machine that nothing is passed on from.
    [[nodiscard]] bool answersHere() const;

    // Throw ProviderError: for an address that can't be used; for private data that would leave.
    void requireUsable() const;
    void requirePrivate() const;

    // Those of `tools` that may be used there.
    [[nodiscard]] std::vector<AITool> offered(std::vector<AITool> tools, bool memoryAllowed) const;
};

} // namespace morvane
