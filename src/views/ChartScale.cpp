#include "views/ChartScale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace morvane {

namespace {

constexpr double wantedSteps = 4;
constexpr int mostLogTicks = 6;
constexpr double leastLogHeight = 0.2; // of the lowest bar, in powers of ten

// 1, 2 or 5 times a power of ten.
double roundStep(double step)
{
    const double power = std::pow(10, std::floor(std::log10(step)));
    const double factor = step / power;
    return power * (factor <= 1 ? 1 : factor <= 2 ? 2 : factor <= 5 ? 5 : 10);
}

} // namespace

ChartScale::ChartScale(const QList<double> &values, Spacing spacing, bool fromZero)
    : m_spacing(spacing)
{
    if (values.isEmpty())
        return;
    double low = *std::min_element(values.begin(), values.end());
    double high = *std::max_element(values.begin(), values.end());
    if (low <= 0)
        m_spacing = Spacing::linear;
    if (m_spacing == Spacing::logarithmic) {
        makeLogarithmic(low, high, fromZero);
        return;
    }
    if (fromZero) {
        low = std::min(low, 0.0);
        high = std::max(high, 0.0);
    }
    makeLinear(low, high);
}

void ChartScale::makeLinear(double low, double high)
{
    // Halves, so that the distance between the ends of the range of a double is still a number.
    const double half = high / 2 - low / 2;
    const double step = half > 0 ? roundStep(2 * (half / wantedSteps)) : std::max(std::abs(high), 1.0);
    const double first = std::floor(low / step);
    const double last = std::max(std::ceil(high / step), first + 1);
    m_low = std::max(first * step, std::numeric_limits<double>::lowest());
    m_high = std::min(last * step, std::numeric_limits<double>::max());
    const int steps = static_cast<int>(last - first);
    for (int tick = 0; tick <= steps; ++tick) {
        if (const double value = (first + tick) * step; std::isfinite(value))
            m_ticks.append(value);
    }
}

void ChartScale::makeLogarithmic(double low, double high, bool withGround)
{
    double first = std::floor(std::log10(low));
    if (withGround && std::log10(low) - first < leastLogHeight)
        --first;
    const double last = std::max(std::ceil(std::log10(high)), first + 1);
    m_low = first;
    m_high = last;
    const int powers = static_cast<int>(last - first);
    const int step = (powers + mostLogTicks - 1) / mostLogTicks;
    for (int power = 0; power <= powers; power += step)
        m_ticks.append(std::pow(10, first + power));
}

double ChartScale::place(double value) const
{
    const double at = isLogarithmic() ? std::log10(value) : value;
    const double place = (at / 2 - m_low / 2) / (m_high / 2 - m_low / 2);
    return std::isfinite(place) ? std::clamp(place, 0.0, 1.0) : 0;
}

} // namespace morvane
