#include "views/ChartScale.h"

#include <gtest/gtest.h>

namespace morvane {

TEST(ChartScaleTest, ValuesStandBetweenRoundTicks)
{
    using Spacing = ChartScale::Spacing;
    const ChartScale bars({3, 37.4, 12}, Spacing::linear, true);
    EXPECT_EQ(bars.ticks(), QList<double>({0, 10, 20, 30, 40}));
    EXPECT_DOUBLE_EQ(bars.place(20), 0.5);
    const ChartScale line({58'700, 61'480}, Spacing::linear, false);
    EXPECT_EQ(line.ticks(), QList<double>({58'000, 59'000, 60'000, 61'000, 62'000}));
    const ChartScale log({20, 5500}, Spacing::logarithmic, false);
    EXPECT_EQ(log.ticks(), QList<double>({10, 100, 1000, 10'000}));
    EXPECT_DOUBLE_EQ(log.place(100), 1.0 / 3);
    EXPECT_GT(ChartScale({100, 1e6}, Spacing::logarithmic, true).place(100), 0.1) << "a bar has a height";
    EXPECT_FALSE(ChartScale({0, 5}, Spacing::logarithmic, false).isLogarithmic());
    for (const QList<double> &values :
         {QList<double>{5, 5}, {0, 0}, {-3, -1}, {-1.7e308, 1.7e308}, {1e-300, 2e-300}}) {
        for (const Spacing spacing : {Spacing::linear, Spacing::logarithmic}) {
            const ChartScale scale(values, spacing, true);
            EXPECT_GE(scale.ticks().size(), 2);
            EXPECT_LE(scale.ticks().size(), 12);
            for (const double value : values) {
                EXPECT_GE(scale.place(value), 0);
                EXPECT_LE(scale.place(value), 1);
            }
        }
    }
}

} // namespace morvane
