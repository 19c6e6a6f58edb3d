#include "attestation/evidence/Keccak256.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace morvane {

namespace {

constexpr std::size_t rate = 136; // bytes absorbed per permutation: 1600 bits less twice the digest

// The 5 by 5 lanes; lane (x, y) is at x + 5 * y.
using State = std::array<std::uint64_t, 25>;

constexpr std::array<std::uint64_t, 24> roundConstants{
    0x0000000000000001, 0x0000000000008082, 0x800000000000808a, 0x8000000080008000, 0x000000000000808b,
    0x0000000080000001, 0x8000000080008081, 0x8000000000008009, 0x000000000000008a, 0x0000000000000088,
    0x0000000080008009, 0x000000008000000a, 0x000000008000808b, 0x800000000000008b, 0x8000000000008089,
    0x8000000000008003, 0x8000000000008002, 0x8000000000000080, 0x000000000000800a, 0x800000008000000a,
    0x8000000080008081, 0x8000000000008080, 0x0000000080000001, 0x8000000080008008};

// Theta: each lane takes the parity of two neighbouring columns.
void mixColumns(State &lanes)
{
    std::array<std::uint64_t, 5> parity{};
    for (std::size_t i = 0; i < lanes.size(); ++i)
        parity[i % 5] ^= lanes[i];
    for (std::size_t i = 0; i < lanes.size(); ++i)
        lanes[i] ^= parity[(i + 4) % 5] ^ std::rotl(parity[(i + 1) % 5], 1);
}

// Rho and pi: lanes are rotated and moved along one cycle through all positions but the first. The step t
// rotates by the t-th triangular number.
void moveLanes(State &lanes)
{
    std::size_t x = 1;
    std::size_t y = 0;
    std::uint64_t carried = lanes[1];
    for (int step = 1; step <= 24; ++step) {
        const std::size_t nextY = (2 * x + 3 * y) % 5;
        x = y;
        y = nextY;
        const std::uint64_t rotated = std::rotl(carried, (step * (step + 1) / 2) % 64);
        carried = lanes[x + 5 * y];
        lanes[x + 5 * y] = rotated;
    }
}

// Chi: the one step that isn't linear, along each row.
void mixRows(State &lanes)
{
    for (std::size_t row = 0; row < lanes.size(); row += 5) {
        const std::array<std::uint64_t, 5> old{lanes[row], lanes[row + 1], lanes[row + 2], lanes[row + 3],
                                               lanes[row + 4]};
        for (std::size_t x = 0; x < 5; ++x)
            lanes[row + x] = old[x] ^ (~old[(x + 1) % 5] & old[(x + 2) % 5]);
    }
}

void permute(State &lanes)
{
    for (const std::uint64_t constant : roundConstants) {
        mixColumns(lanes);
        moveLanes(lanes);
        mixRows(lanes);
        lanes[0] ^= constant;
    }
}

void absorb(State &lanes, std::size_t position, std::uint8_t byte)
{
    lanes[position / 8] ^= std::uint64_t{byte} << (8 * (position % 8));
}

} // namespace

QByteArray Keccak256::hash(QByteArrayView message)
{
    State lanes{};
    std::size_t position = 0;
    for (const char byte : message) {
        absorb(lanes, position, static_cast<std::uint8_t>(byte));
        if (++position == rate) {
            permute(lanes);
            position = 0;
        }
    }
    absorb(lanes, position, 0x01);
    absorb(lanes, rate - 1, 0x80);
    permute(lanes);

    QByteArray digest(32, Qt::Uninitialized);
    for (qsizetype i = 0; i < digest.size(); ++i)
        digest[i] = static_cast<char>(lanes[static_cast<std::size_t>(i / 8)] >> (8 * (i % 8)));
    return digest;
}

} // namespace morvane
