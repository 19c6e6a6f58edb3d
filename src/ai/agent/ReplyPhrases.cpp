#include "ai/agent/ReplyPhrases.h"

#include <QString>

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array refusals{
    "can't look that up"_L1,
    "cannot look that up"_L1,
    "can't look this up"_L1,
    "cannot look this up"_L1,
    "can't look up"_L1,
    "cannot look up"_L1,
    "not able to look up"_L1,
    "can't fetch"_L1,
    "cannot fetch"_L1,
    "can't extract"_L1,
    "cannot extract"_L1,
    "can't parse"_L1,
    "cannot parse"_L1,
    "can't check that"_L1,
    "cannot check that"_L1,
    "can't search"_L1,
    "cannot search"_L1,
    "unable to search"_L1,
    "don't have access to real-time"_L1,
    "do not have access to real-time"_L1,
    "don't have real-time"_L1,
    "do not have real-time"_L1,
    "i don't have the ability to look"_L1,
    "i can't browse"_L1,
    "i cannot browse"_L1,
    "don't have direct access to external"_L1,
    "do not have direct access to external"_L1,
    "can't retrieve"_L1,
    "cannot retrieve"_L1,
    "blocks automated access"_L1,
    "blocked from accessing"_L1,
};

constexpr std::array offers{
    "if you'd like"_L1, "if you would like"_L1, "would you like"_L1, "want me to"_L1,  "let me know"_L1,
    "shall i"_L1,       "should i add"_L1,      "i can add"_L1,      "i could add"_L1,
};

constexpr std::array claims{
    "i've scheduled"_L1,
    "i have scheduled"_L1,
    "added to your calendar"_L1,
    "added it to your calendar"_L1,
};

template <std::size_t Count>
bool holdsAny(const QString &text, const std::array<QLatin1StringView, Count> &phrases)
{
    return std::any_of(phrases.begin(), phrases.end(),
                       [&text](QLatin1StringView phrase) { return text.contains(phrase); });
}

} // namespace

bool ReplyPhrases::refusesSearch(QStringView reply)
{
    return holdsAny(reply.toString().toLower(), refusals);
}

bool ReplyPhrases::claimsScheduling(QStringView reply)
{
    const QString text = reply.toString().toLower();
    return !holdsAny(text, offers) && holdsAny(text, claims);
}

} // namespace morvane
