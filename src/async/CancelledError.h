#pragma once

#include <exception>
#include <stop_token>

namespace morvane {

// Thrown out of a suspended operation whose stop token was triggered. Never shown to a person as a failure.
class CancelledError final : public std::exception {
public:
    [[nodiscard]] const char *what() const noexcept override { return "cancelled"; }
};

inline void throwIfStopped(const std::stop_token &stop)
{
    if (stop.stop_requested())
        throw CancelledError();
}

} // namespace morvane
