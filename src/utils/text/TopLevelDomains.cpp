#include "utils/text/TopLevelDomains.h"

#include <QString>

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The two-letter country codes in use as domains, each behind a blank. Without those that name a kind of
// file: cc, md, mm, ps, py, rs, sh, so.
constexpr QLatin1StringView countries{" ac ad ae af ag ai al am ao aq ar as at au aw ax az ba bb bd be bf bg "
                                      "bh bi bj bm bn bo br bs bt bw by bz "
                                      "ca cd cf cg ch ci ck cl cm cn co cr cu cv cw cx cy cz de dj dk dm do "
                                      "dz ec ee eg er es et eu fi fj fk fm fo "
                                      "fr ga gd ge gf gg gh gi gl gm gn gp gq gr gs gt gu gw gy hk hm hn hr "
                                      "ht hu id ie il im in io iq ir is it je "
                                      "jm jo jp ke kg kh ki km kn kp kr kw ky kz la lb lc li lk lr ls lt lu "
                                      "lv ly ma mc me mg mh mk ml mn mo mp mq "
                                      "mr ms mt mu mv mw mx my mz na nc ne nf ng ni nl no np nr nu nz om pa "
                                      "pe pf pg ph pk pl pm pn pr pt pw qa re "
                                      "ro ru rw sa sb sc sd se sg si sk sl sm sn sr ss st su sv sx sy sz tc "
                                      "td tf tg th tj tk tl tm tn to tr tt tv "
                                      "tw tz ua ug uk us uy uz va vc ve vg vi vn vu wf ws ye yt za zm zw "};

// Sorted.
constexpr std::array generic{
    "academy"_L1,  "aero"_L1,    "agency"_L1,     "app"_L1,        "art"_L1,      "asia"_L1,
    "bank"_L1,     "berlin"_L1,  "biz"_L1,        "blog"_L1,       "cafe"_L1,     "cat"_L1,
    "city"_L1,     "cloud"_L1,   "club"_L1,       "codes"_L1,      "com"_L1,      "coop"_L1,
    "design"_L1,   "dev"_L1,     "digital"_L1,    "earth"_L1,      "edu"_L1,      "email"_L1,
    "events"_L1,   "expert"_L1,  "finance"_L1,    "foundation"_L1, "fun"_L1,      "games"_L1,
    "global"_L1,   "gov"_L1,     "group"_L1,      "guide"_L1,      "health"_L1,   "help"_L1,
    "hotel"_L1,    "house"_L1,   "info"_L1,       "int"_L1,        "jobs"_L1,     "life"_L1,
    "live"_L1,     "london"_L1,  "ltd"_L1,        "market"_L1,     "media"_L1,    "mil"_L1,
    "mobi"_L1,     "museum"_L1,  "name"_L1,       "net"_L1,        "network"_L1,  "news"_L1,
    "ngo"_L1,      "nyc"_L1,     "one"_L1,        "online"_L1,     "org"_L1,      "page"_L1,
    "paris"_L1,    "photo"_L1,   "photos"_L1,     "post"_L1,       "press"_L1,    "pro"_L1,
    "pub"_L1,      "red"_L1,     "review"_L1,     "rocks"_L1,      "school"_L1,   "science"_L1,
    "services"_L1, "shop"_L1,    "site"_L1,       "social"_L1,     "software"_L1, "solutions"_L1,
    "space"_L1,    "store"_L1,   "studio"_L1,     "support"_L1,    "swiss"_L1,    "systems"_L1,
    "team"_L1,     "tech"_L1,    "technology"_L1, "tel"_L1,        "tips"_L1,     "today"_L1,
    "tools"_L1,    "top"_L1,     "tours"_L1,      "town"_L1,       "travel"_L1,   "university"_L1,
    "vip"_L1,      "website"_L1, "wien"_L1,       "wiki"_L1,       "work"_L1,     "world"_L1,
    "wtf"_L1,      "xyz"_L1,     "zone"_L1,
};

// Country domains in scripts of their own, each behind a blank.
constexpr QStringView ownScripts =
    u" 中国 中國 公司 网络 香港 台灣 台湾 рф рус укр бел бг мкд срб қаз мон 한국 भारत ไทย ελ ευ հայ გე "
    u"ישראל امارات ایران السعودية مصر ";

template <typename List>
bool holds(const List &list, QStringView label)
{
    return list.contains(QString(u' ' + label.toString() + u' '));
}

} // namespace

bool TopLevelDomains::contains(QStringView label)
{
    constexpr qsizetype longest = 24;
    if (label.size() < 2 || label.size() > longest)
        return false;
    const QString lower = label.toString().toLower();
    if (lower.startsWith("xn--"_L1))
        return true;
    if (lower.size() == 2 && holds(QString(countries), lower))
        return true;
    return std::binary_search(generic.begin(), generic.end(), lower,
                              [](const auto &a, const auto &b) { return a < b; }) ||
           holds(ownScripts, lower);
}

} // namespace morvane
