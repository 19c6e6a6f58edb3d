#include "view_models/blocks/WeatherGlyph.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Rule {
    QLatin1StringView word;
    QLatin1StringView glyph;
};

// The first word that occurs decides: the harsher ones stand first.
constexpr Rule rules[] = {
    {"thunder"_L1, "storm"_L1},
    {"storm"_L1, "storm"_L1},
    {"lightning"_L1, "storm"_L1},
    {"snow"_L1, "snow"_L1},
    {"sleet"_L1, "snow"_L1},
    {"blizzard"_L1, "snow"_L1},
    {"flurr"_L1, "snow"_L1},
    {"hail"_L1, "snow"_L1},
    {"ice"_L1, "snow"_L1},
    {"rain"_L1, "rain"_L1},
    {"shower"_L1, "rain"_L1},
    {"drizzle"_L1, "rain"_L1},
    {"fog"_L1, "fog"_L1},
    {"mist"_L1, "fog"_L1},
    {"haze"_L1, "fog"_L1},
    {"smoke"_L1, "fog"_L1},
    {"wind"_L1, "wind"_L1},
    {"breez"_L1, "wind"_L1},
    {"gust"_L1, "wind"_L1},
    {"partly"_L1, "partly"_L1},
    {"mostly sunny"_L1, "partly"_L1},
    {"mostly clear"_L1, "partly"_L1},
    {"few clouds"_L1, "partly"_L1},
    {"scattered"_L1, "partly"_L1},
    {"broken"_L1, "partly"_L1},
    {"cloud"_L1, "cloud"_L1},
    {"overcast"_L1, "cloud"_L1},
    {"sun"_L1, "sun"_L1},
    {"clear"_L1, "sun"_L1},
    {"fair"_L1, "sun"_L1},
    {"hot"_L1, "sun"_L1},
};

} // namespace

QString WeatherGlyph::of(const QString &condition)
{
    const auto found = std::find_if(std::begin(rules), std::end(rules), [&condition](const Rule &rule) {
        return condition.contains(rule.word, Qt::CaseInsensitive);
    });
    return u"weather-"_s + (found == std::end(rules) ? "cloud"_L1 : found->glyph);
}

} // namespace morvane
