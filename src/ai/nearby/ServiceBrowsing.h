#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace morvane {

// A service that some computer of the local network announces. Both texts come from that computer.
struct BrowsedService {
    QString name; // as its owner called it, for people to read
    QString host; // the computer's own name on the network, without a final dot; empty where it told none

    bool operator==(const BrowsedService &) const = default;
};

struct BrowseFailure {
    enum class Reason {
        refused,  // the desktop doesn't let this program look around the network
        noSearch, // nothing on this machine searches networks
        failed,
    };
    Reason reason = Reason::failed;
    QString description; // for the log
};

// One look around for services of a type. Destroying it ends the look; its handlers may do that.
class ServiceBrowse {
public:
    virtual ~ServiceBrowse() = default;
};

// Looking around the local network for announced services (DNS-SD, RFC 6763). GUI thread.
class ServiceBrowsing {
public:
    struct Handlers {
        std::function<void(std::vector<BrowsedService> all)> resultsChanged;
        std::function<void(BrowseFailure)> failed; // once; nothing follows
    };

    virtual ~ServiceBrowsing() = default;

    // Services of `type` ("_ssh._tcp") in the domain "local.", announced by other computers. The handlers
    // are called from the event loop, never from here.
    [[nodiscard]] virtual std::unique_ptr<ServiceBrowse> browse(QString type, Handlers handlers) = 0;
};

} // namespace morvane
