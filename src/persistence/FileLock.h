#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace morvane {

// An exclusive lock on a file that other processes respect too. It goes with its object, and with the process
// however that ends. Moves, does not copy.
class FileLock {
public:
    using Pause = std::function<void(std::chrono::milliseconds)>;

    // Makes the file, mode 0600. Nothing when another holds the lock for all of `limit`. `pause` lets a short
    // while pass between two attempts. Throws FileError when the file can't be made.
    [[nodiscard]] static std::optional<FileLock> acquire(const QString &path, std::chrono::milliseconds limit,
                                                         const Pause &pause = sleep);

    FileLock(FileLock &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {}
    FileLock &operator=(FileLock &&other) noexcept;
    ~FileLock();

    static void sleep(std::chrono::milliseconds duration);

private:
    explicit FileLock(int descriptor)
        : m_descriptor(descriptor)
    {}

    int m_descriptor;
};

} // namespace morvane
