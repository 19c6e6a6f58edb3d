#include "utils/bytes/Argon2id.h"

#include <argon2.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <new>
#include <stdexcept>

namespace morvane {

namespace {

constexpr double aim = 0.5; // seconds of a core
constexpr double fewestPasses = 3;
constexpr double mostPasses = 32;
constexpr std::uint32_t leastMemory = 8; // KiB; the algorithm's own
constexpr std::uint32_t mostMemory = 1024 * 1024;
constexpr std::uint64_t mostWork = std::uint64_t{32} * Argon2id::usualMemory; // KiB times passes

// Of the calling thread, so that a busy machine measures what an idle one does.
double secondsWorked()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double secondsFor(std::uint32_t passes)
{
    const SecretBytes sample(Argon2id::saltSize);
    const double start = secondsWorked();
    (void)Argon2id::derive(sample, sample.view(), {Argon2id::usualMemory, passes}, 32);
    return secondsWorked() - start;
}

} // namespace

bool Argon2id::isBearable(const Cost &cost)
{
    return cost.memory >= leastMemory && cost.memory <= mostMemory && cost.passes >= 1 &&
           std::uint64_t{cost.memory} * cost.passes <= mostWork;
}

// The first pass also fetches the memory, so that two tell what each further one takes.
Argon2id::Cost Argon2id::measured()
{
    const double one = secondsFor(1);
    const double further = std::max(secondsFor(2) - one, one / 4);
    const double passes = 1 + std::round((aim - one) / further);
    return {usualMemory, static_cast<std::uint32_t>(std::clamp(passes, fewestPasses, mostPasses))};
}

SecretBytes Argon2id::derive(const SecretBytes &passphrase, QByteArrayView salt, const Cost &cost,
                             std::size_t size)
{
    if (!isBearable(cost))
        throw std::invalid_argument("a passphrase's key would cost too much");
    SecretBytes key(size);
    const int result =
        argon2id_hash_raw(cost.passes, cost.memory, 1, passphrase.data(), passphrase.size(), salt.data(),
                          static_cast<std::size_t>(salt.size()), key.data(), size);
    if (result == ARGON2_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (result != ARGON2_OK)
        throw std::runtime_error("no key could be derived from a passphrase");
    return key;
}

} // namespace morvane
