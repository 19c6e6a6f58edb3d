#include "view_models/AccentInk.h"

#include <algorithm>
#include <cmath>

namespace morvane {

namespace AccentInk {

namespace {

double linear(double part)
{
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &colour)
{
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

QColor mixed(const QColor &from, const QColor &to, double share)
{
    const auto part = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return QColor(part(from.red(), to.red()), part(from.green(), to.green()), part(from.blue(), to.blue()));
}

} // namespace

double contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor readable(const QColor &wanted, const QColor &ground, double ratio)
{
    constexpr int steps = 64;
    const QColor end = contrast(Qt::white, ground) > contrast(Qt::black, ground) ? Qt::white : Qt::black;
    for (int step = 0; step < steps; ++step) {
        const QColor tried = mixed(wanted, end, static_cast<double>(step) / steps);
        if (contrast(tried, ground) >= ratio && contrast(tried, end) <= contrast(ground, end))
            return tried;
    }
    return end;
}

} // namespace AccentInk

} // namespace morvane
