#pragma once

#include <QCoroTask>
#include <QString>

#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

// The microphones of this machine. GUI thread.
class MicrophoneDevices {
public:
    struct Device {
        QString uid;  // stays the same when the device comes back
        QString name; // as people read it
        bool operator==(const Device &) const = default;
    };

    virtual ~MicrophoneDevices() = default;

    // As they are now; nothing tells of a change.
    [[nodiscard]] virtual QCoro::Task<std::vector<Device>> all(std::stop_token stop) = 0;
};

} // namespace morvane
