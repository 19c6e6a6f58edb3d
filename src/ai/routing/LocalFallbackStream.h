#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/contract/ProviderError.h"
#include "ai/routing/PreparedRequest.h"

#include <functional>
#include <memory>

namespace morvane {

// Relays a reply, and when the private cloud refuses to give one goes on with the model on this machine.
namespace LocalFallbackStream {

// What the relay needs of whoever decides where turns go. Called from the GUI thread, at any time until the
// stream is dropped or over; may throw CancelledError.
struct Decisions {
    struct Place {
        AIConfiguration configuration;
        std::shared_ptr<AIProvider> provider;
    };

    // A hardware proof did not verify. Told before anything else happens.
    std::function<void(const QString &reason)> noteRefusal;

    // Another row of the proof ledger tells of this reply from here on.
    std::function<void(const QUuid &row)> noteRow;

    // Where the reply goes instead, given what it was to run on; nothing when no model on this machine is
    // ready.
    std::function<QCoro::Task<std::optional<Place>>(AIConfiguration refused, std::stop_token stop)> standby;
};

// Returns at once. Fails with ProviderError; dropping the stream ends the reply.
[[nodiscard]] AsyncStream<AIStreamEvent> relay(PreparedRequest request, std::shared_ptr<AIProvider> provider,
                                               Decisions decisions);

// The error for a refusal that no local model makes good.
[[nodiscard]] ProviderError unanswered(const QString &reason);

} // namespace LocalFallbackStream

} // namespace morvane
