// Models that use abilities over several rounds, well and badly.

#include "AgentReplies.h"
#include "Scenarios.h"

#include <QRegularExpression>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace AgentReplies;

namespace {

// Wherever it stands: some services take one system message only.
bool wasCorrected(const Request &request)
{
    const QJsonArray messages = request.json["messages"_L1].toArray();
    return std::any_of(messages.begin(), messages.end(), [](const QJsonValue &message) {
        return message["role"_L1].toString() == "system"_L1 &&
               message["content"_L1].toString().contains("Correction:"_L1);
    });
}

Reply searching(const Request &request)
{
    return calling(request, u"search_web"_s, {{u"query"_s, request.lastUserText().left(120)}});
}

Reply quoting(const QString &result)
{
    return saying(u"The practice server was told: “%1”."_s.arg(result));
}

// Searches, reads the first page that was found, and answers from it.
Work agentSearch(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QStringList results = toolResults(request);
    static const QRegularExpression address(uR"(https?://\S+)"_s);
    const QString found = results.isEmpty() ? QString() : address.match(results.first()).captured();
    Reply reply = quoting(results.value(results.size() - 1));
    if (results.isEmpty() && request.offersTools())
        reply = searching(request);
    else if (results.size() == 1 && !found.isEmpty() && request.offersTools())
        reply = calling(request, u"read_web_page"_s, {{u"url"_s, found}});
    co_await play(exchange, std::move(reply));
}

// What the search found is more than the model takes in.
Work agentOverflows(Exchange &exchange)
{
    if (!toolResults(exchange.request()).isEmpty())
        co_await Scenarios::find(u"context-full"_s)->play(exchange);
    else
        co_await agentSearch(exchange);
}

Work agentLoops(Exchange &exchange)
{
    const Request &request = exchange.request();
    Reply reply = request.offersTools() ? searching(request)
                                        : saying(u"The practice server has no more tools to call."_s);
    co_await play(exchange, std::move(reply));
}

Work agentClaimsEvent(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QStringList results = toolResults(request);
    Reply reply = saying(u"I've scheduled lunch for you."_s);
    if (!results.isEmpty())
        reply = quoting(results.last());
    else if (wasCorrected(request))
        reply = calling(request, u"create_calendar_event"_s,
                        {{u"title"_s, u"Lunch"_s}, {u"minutes_from_now"_s, 60}});
    co_await play(exchange, std::move(reply));
}

Work agentRefusesSearch(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QStringList results = toolResults(request);
    Reply reply = saying(u"Sorry, I can't look that up."_s);
    if (!results.isEmpty())
        reply = quoting(results.last());
    else if (wasCorrected(request))
        reply = searching(request);
    co_await play(exchange, std::move(reply));
}

Work agentLooks(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QStringList results = toolResults(request);
    Reply reply = results.isEmpty() ? calling(request, u"look_at_screen"_s, {}) : quoting(results.last());
    co_await play(exchange, std::move(reply));
}

} // namespace

std::span<const Scenario> Scenarios::agents()
{
    static constexpr Scenario all[]{
        {"agent-search"_L1, "searches, reads the first page found, answers from it"_L1, agentSearch},
        {"agent-overflows"_L1, "searches, and has no room for what was found"_L1, agentOverflows},
        {"agent-loops"_L1, "calls a tool for as long as there are any"_L1, agentLoops},
        {"agent-claims-event"_L1, "claims an event it never made; corrected, it makes it"_L1,
         agentClaimsEvent},
        {"agent-refuses-search"_L1, "declines to search; corrected, it searches"_L1, agentRefusesSearch},
        {"agent-looks"_L1, "looks at the screen and says what it saw"_L1, agentLooks},
    };
    return all;
}

} // namespace morvane
