#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/routing/DevRelay.h"

#include <functional>
#include <memory>
#include <optional>

namespace morvane {

// The private cloud as this build reaches it.
struct PrivateCloud {
    QString endpoint;                         // https, ends in "/v1"; empty when this build knows none
    std::optional<DevRelay::Origin> devRelay; // takes the endpoint's place

    // The key that the service, or the relay, knows this install by. May be absent.
    std::function<std::optional<QString>()> apiKey;

    // Makes the one provider that seals what it sends. Called once, on first use; without it nothing is ever
    // sent to the private cloud.
    std::function<std::shared_ptr<AIProvider>()> makeProvider;

    // Empty when this build can't reach the private cloud.
    [[nodiscard]] QString baseURL() const;

    // A base address that leads there, however it is spelled.
    [[nodiscard]] bool isAt(const QString &baseURL) const;
};

} // namespace morvane
