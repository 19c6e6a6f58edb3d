#pragma once

#include "ai/routing/ChatSource.h"

#include <optional>

namespace morvane {

// What the composer warns of before anything is sent.
struct PrivacyNotice {
    enum class Kind {
        notPrivate,           // a service reads what is sent
        unencryptedOnNetwork, // others on the network could read it
    };

    Kind kind = Kind::notPrivate;
    QString host;

    bool operator==(const PrivacyNotice &) const = default;

    // Nothing when there is nothing to warn of.
    [[nodiscard]] static std::optional<PrivacyNotice> of(const ChatSource &source,
                                                         const QString &baseURLString);
};

} // namespace morvane
