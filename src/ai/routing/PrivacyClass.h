#pragma once

#include <QString>

namespace morvane {

// What becomes of the words of a turn at its destination.
struct PrivacyClass {
    enum class Kind {
        staysPrivate,      // a model on this machine or on its network
        leavesThisNetwork, // a service, or a host that isn't known to be near
        cloudModel,        // a server nearby that passes the model's questions on to a service
        unknownModel,      // a server nearby that doesn't list the model
    };

    Kind kind = Kind::leavesThisNetwork;
    QString model; // of cloudModel

    bool operator==(const PrivacyClass &) const = default;
};

} // namespace morvane
