#include "view_models/blocks/WeatherGlyph.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestCondition = 200;

// Words that are apart by spaces, in English, German, French and Spanish; the last list is Chinese and
// Japanese, which part no words. Written without accents, "|" for a space within a phrase. The first row with
// a word of the condition decides: the harsher ones stand first, and "partly cloudy" before "cloudy".
struct Row {
    QLatin1StringView glyph;
    QStringView words;
    QStringView signs;
};

constexpr Row rows[] = {
    {"storm"_L1,
     u"thunder thunderstorm thunderstorms thundershower thundershowers thundery storm storms stormy "
     u"lightning "
     "tornado hurricane gewitter gewittrig gewitterschauer unwetter orage orages orageux orageuse tempete "
     "foudre tormenta tormentas tormentoso trueno truenos relampagos",
     u"雷"},
    {"snow"_L1,
     u"snow snowy snowing snowfall snowstorm sleet blizzard flurry flurries hail ice icy wintry schnee "
     "schneefall schneefalle schneeschauer schneeregen schneesturm hagel graupel eisregen eis neige neiges "
     "neigeux gresil grele verglas nieve nieves nevada nevadas nevando aguanieve granizo hielo ventisca",
     u"雪雹冰霰"},
    {"rain"_L1,
     u"rain rains rainy raining rainfall rainshowers shower showers showery drizzle drizzling drizzly "
     "downpour regen regnerisch regenschauer schauer niesel nieselregen spruhregen starkregen pluie pluies "
     "pluvieux pluvieuse averse averses bruine crachin lluvia lluvias lluvioso lluviosa llovizna lloviznas "
     "chubasco chubascos aguacero aguaceros",
     u"雨"},
    {"fog"_L1,
     u"fog foggy mist misty haze hazy smoke smoky smog nebel neblig dunst dunstig rauch brouillard "
     "brouillards brume brumeux brumeuse fumee niebla nieblas neblina bruma calima humo",
     u"雾霧霾煙烟"},
    {"wind"_L1,
     u"wind winds windy breeze breezy gust gusts gusty gale wind windig boig boen sturmisch vent vents "
     "venteux venteuse rafales mistral viento vientos ventoso ventosa rafagas brisa",
     u"风風"},
    {"partly"_L1,
     u"partly partially scattered intermittent few|clouds mostly|sunny mostly|clear broken|clouds teilweise "
     "heiter aufgelockert leicht|bewolkt wechselnd|bewolkt meist|sonnig partiellement eclaircies "
     "peu|nuageux plutot|ensoleille parcialmente intervalos poco|nuboso mayormente|soleado",
     u""},
    {"cloud"_L1,
     u"cloud clouds cloudy overcast gray grey bewolkt wolkig wolken bedeckt trub nuage nuages nuageux "
     "nuageuse couvert couverte nube nubes nublado nublada nuboso nubosidad cubierto",
     u"云雲阴陰曇"},
    {"sun"_L1,
     u"sun sunny sunshine clear fair hot sonne sonnig sonnenschein klar wolkenlos soleil ensoleille "
     "ensoleillee degage clair sol soleado soleada despejado despejada claro",
     u"晴"},
};

// The letters in lower case and without their accents, words apart by one space, with one at either end.
QString spaced(QStringView condition)
{
    QString words(u' ');
    for (const QChar c : condition.first(std::min(condition.size(), longestCondition))
                             .toString()
                             .normalized(QString::NormalizationForm_KD)) {
        if (c.isLetter())
            words += c.toLower();
        else if (!c.isMark() && !words.endsWith(u' '))
            words += u' ';
    }
    return words.endsWith(u' ') ? words : words + u' ';
}

bool isMeant(const Row &row, const QString &words)
{
    for (const QStringView word : row.words.tokenize(u' ')) {
        if (words.contains(u' ' + word.toString().replace(u'|', u' ') + u' '))
            return true;
    }
    return std::any_of(words.begin(), words.end(), [&row](QChar c) { return row.signs.contains(c); });
}

} // namespace

QString WeatherGlyph::of(const QString &condition)
{
    const QString words = spaced(condition);
    const auto found = std::find_if(std::begin(rows), std::end(rows),
                                    [&words](const Row &row) { return isMeant(row, words); });
    return found == std::end(rows) ? QString() : u"weather-"_s + found->glyph;
}

} // namespace morvane
