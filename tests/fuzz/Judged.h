#pragma once

#include <QByteArrayView>

#include <numeric>

namespace morvane {

// Whether what was read is also judged: one input in eight. Cryptography takes a thousand times as long as
// reading, and would leave the readers with few runs.
inline bool isJudged(QByteArrayView input)
{
    return std::accumulate(input.begin(), input.end(), 0U) % 8 == 0;
}

} // namespace morvane
