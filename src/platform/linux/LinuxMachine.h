#pragma once

#include "ai/local/LocalMachine.h"

namespace morvane {

// This machine as the kernel tells of it, and the drivers of its graphics cards.
class LinuxMachine final : public LocalMachine {
public:
    // The roots of the kernel's files, and the library of NVIDIA's driver, which is loaded while it is asked.
    struct Places {
        QString sys = QStringLiteral("/sys");
        QString proc = QStringLiteral("/proc");
        QByteArray managementLibrary = "libnvidia-ml.so.1";
    };

    LinuxMachine()
        : LinuxMachine(Places())
    {}
    explicit LinuxMachine(Places places)
        : m_places(std::move(places))
    {}

    [[nodiscard]] Memory memory() const override;
    [[nodiscard]] std::optional<std::uint64_t> freeDisk(const QString &path) const override;
    [[nodiscard]] std::optional<std::vector<Listener>> listeners(qint64 process) const override;
    [[nodiscard]] bool isShared(int port, qint64 process) const override;

private:
    Places m_places;
};

} // namespace morvane
