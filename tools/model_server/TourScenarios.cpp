// What a stranger sees of the application in the demo: each suggestion of an empty chat leads to something
// else, and all of it says that it is practice.

#include "AgentReplies.h"
#include "Scenarios.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace AgentReplies;

namespace {

const QString drawn =
    uR"(This is **practice**: the words are prepared, no model is thinking behind them, and nothing you type leaves this computer. So an answer can look:

| Fern | Light | Water |
|---|---|---|
| Hart's tongue | shade | often |
| Male fern | half shade | seldom |

```chart
type: bar
title: Litres a week (made up)
Spring | 4
Summer | 9
Autumn | 5
Winter | 2
```

```python
def litres(ferns, weeks):
    """Practice code, and it runs."""
    return sum(fern.thirst for fern in ferns) * weeks
```

```stat
12 | Ferns
20 l | Water a month | +3%
```

Each block has a button that copies it. **Help me write…** shows a note with an undo, **Make a plan…** a search that asks first. Settings > AI connects a real model.)"_s;

const QString weighed = uR"(Still **practice**, prepared words: three questions, and two ways side by side.

1. What happens if I do nothing?
2. Who else has to live with it?
3. How hard is it to take back?

```compare
Now | Later
Cost | 40 a month | 55 a month
To take back | easy | hard
```

```timeline
Today | Ask
Friday | Decide
In a month | Look again
```)"_s;

struct Ability {
    QLatin1StringView tool;
    QLatin1StringView parameter;
    QString given;
    QString without; // said where the tool isn't offered
    QString after;
};

const Ability noting{
    "remember"_L1, "fact"_L1, u"Likes ferns (a practice note)"_s,
    u"This is **practice**. With Settings > Memory on, a model can keep notes about you here."_s,
    u"This is **practice**, but the note is real: it stands in Settings > Memory of this profile, sealed, "
    u"and "
    u"**Undo** takes it back."_s};

const Ability searching{
    "search_web"_L1, "query"_L1, u"practice: ferns for deep shade"_s,
    u"This is **practice**. With Settings > Abilities on, a model can search the web here, and asks first."_s,
    u"This is **practice**: the search ran after your yes, and the practice server answered it on this "
    u"computer. The "
    u"pages named below don't exist; with a real search they open in your browser.\n\nSettings > Network has "
    u"a row for "
    u"each request that was made."_s};

Reply playing(const Request &request, const Ability &ability)
{
    const QStringList results = toolResults(request);
    if (results.isEmpty() && request.offersTools())
        return calling(request, ability.tool, {{ability.parameter, ability.given}});
    if (results.isEmpty())
        return saying(ability.without);
    if (results.last().contains("declined"_L1))
        return saying(u"This is **practice**: you said no, so nothing ran."_s);
    return saying(ability.after);
}

Reply answer(const Request &request)
{
    const QString said = request.lastUserText();
    if (said.startsWith("Help me write"_L1))
        return playing(request, noting);
    if (said.startsWith("Make a plan"_L1))
        return playing(request, searching);
    if (said.startsWith("What should I ask"_L1))
        return saying(weighed);
    if (said == "Reply with the single word: ok"_L1)
        return saying(Scenarios::practiceText(request));
    return saying(drawn);
}

Work tour(Exchange &exchange)
{
    Reply reply = answer(exchange.request());
    reply.firstPause = 250ms;
    reply.pause = 15ms;
    co_await play(exchange, std::move(reply));
}

} // namespace

std::span<const Scenario> Scenarios::tours()
{
    static constexpr Scenario all[]{
        {"practice-tour"_L1, "shows what the application can do, and says that it is practice"_L1, tour},
    };
    return all;
}

} // namespace morvane
