#pragma once

#include <QList>

namespace morvane {

// Where values stand on the upright axis of a chart.
class ChartScale {
public:
    enum class Spacing { linear, logarithmic };

    // From zero on when `fromZero`, as bars need it; a logarithmic one from a power of ten that leaves the
    // lowest bar a height. Values that have no logarithm make the scale linear.
    ChartScale(const QList<double> &values, Spacing spacing, bool fromZero);

    // 0 at the bottom, 1 at the top.
    [[nodiscard]] double place(double value) const;
    // Round values inside the range, lowest first: 2 to 7 of them.
    [[nodiscard]] const QList<double> &ticks() const { return m_ticks; }
    [[nodiscard]] bool isLogarithmic() const { return m_spacing == Spacing::logarithmic; }

private:
    void makeLinear(double low, double high);
    void makeLogarithmic(double low, double high, bool withGround);

    Spacing m_spacing;
    double m_low = 0;
    double m_high = 1;
    QList<double> m_ticks;
};

} // namespace morvane
