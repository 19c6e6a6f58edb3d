#include "ai/local/ModelLadder.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ModelLadder::gibibyte;

struct Rung {
    QLatin1StringView model;
    std::uint64_t size;     // bytes of its download
    std::uint64_t fastFrom; // bytes of fast memory
};

// From the largest to the smallest.
constexpr std::array<Rung, 4> rungs{{
    {"qwen2.5:14b"_L1, 9'663'676'416, 30 * gibibyte},
    {"qwen2.5:7b"_L1, 5'046'586'572, 14 * gibibyte},
    {"llama3.2:3b"_L1, 2 * gibibyte, 7 * gibibyte},
    {"llama3.2:1b"_L1, 1'395'864'371, 0},
}};
constexpr std::size_t ordinary = 2; // the largest one for a processor without a card
constexpr std::uint64_t ordinaryFrom = 7 * gibibyte;

constexpr Rung pictures{"gemma3:4b"_L1, 3'543'348'019, 14 * gibibyte};
constexpr std::uint64_t unknownSize = 5 * gibibyte;
constexpr std::uint64_t reserve = 2 * gibibyte;

std::uint64_t fastMemory(const LocalMachine::Memory &memory, bool usesAMD)
{
    return std::max(memory.nvidiaGraphics, usesAMD ? memory.amdGraphics : 0);
}

std::size_t rungOfCard(std::uint64_t bytes)
{
    const auto *fit = std::find_if(rungs.begin(), rungs.end(),
                                   [bytes](const Rung &rung) { return bytes >= rung.fastFrom; });
    return static_cast<std::size_t>(fit - rungs.begin());
}

} // namespace

QString ModelLadder::smallest()
{
    return rungs.back().model;
}

QString ModelLadder::vision()
{
    return pictures.model;
}

// A small card doesn't make the machine worse than it is without one.
QString ModelLadder::recommended(const LocalMachine::Memory &memory, bool usesAMD)
{
    const std::size_t without = memory.main >= ordinaryFrom ? ordinary : rungs.size() - 1;
    return rungs.at(std::min(without, rungOfCard(fastMemory(memory, usesAMD)))).model;
}

bool ModelLadder::offersVision(const LocalMachine::Memory &memory, bool usesAMD)
{
    return fastMemory(memory, usesAMD) >= pictures.fastFrom;
}

std::uint64_t ModelLadder::size(const QString &model)
{
    if (model == pictures.model)
        return pictures.size;
    const auto *rung =
        std::find_if(rungs.begin(), rungs.end(), [&](const Rung &one) { return one.model == model; });
    return rung == rungs.end() ? unknownSize : rung->size;
}

std::uint64_t ModelLadder::need(const QString &model)
{
    return size(model) + reserve;
}

std::optional<QString> ModelLadder::fitting(const QString &recommended, std::optional<std::uint64_t> freeDisk)
{
    if (!freeDisk)
        return recommended;
    const auto *from =
        std::find_if(rungs.begin(), rungs.end(), [&](const Rung &rung) { return rung.model == recommended; });
    const auto *fit =
        std::find_if(from, rungs.end(), [&](const Rung &rung) { return need(rung.model) <= *freeDisk; });
    return fit == rungs.end() ? std::nullopt : std::optional<QString>(fit->model);
}

} // namespace morvane
