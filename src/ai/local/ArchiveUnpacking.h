#pragma once

#include <QString>

#include <exception>
#include <stop_token>

namespace morvane {

// Unpacks an archive whose bytes nobody vouches for. For a thread of Work.
namespace ArchiveUnpacking {

class Failure final : public std::exception {
public:
    enum class Reason { unreadable, refused, diskFull };

    Failure(Reason reason, int code)
        : m_reason(reason)
        , m_code(code)
    {}

    [[nodiscard]] Reason reason() const { return m_reason; }
    [[nodiscard]] int code() const { return m_code; } // errno, or the library's own; for the log
    [[nodiscard]] const char *what() const noexcept override { return "the archive couldn't be unpacked"; }

private:
    Reason m_reason;
    int m_code;
};

struct Limits {
    qint64 bytes = qint64{8} << 30; // of all files, as they are when unpacked
    int entries = 20'000;
};

// Into a folder that is there and empty. Only folders, regular files and links to what the folder itself
// holds come out, files with the modes 0700 or 0600, whatever the archive says; anything else, a name that
// leaves the folder or a second entry of one name refuses the whole. Throws Failure, and CancelledError when
// `stop` is triggered; part of the archive may lie there then.
void unpack(const QString &archive, const QString &folder, const Limits &limits, const std::stop_token &stop);

} // namespace ArchiveUnpacking

} // namespace morvane
