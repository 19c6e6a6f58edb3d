#include "ai/tools/PageRescue.h"

#include "ai/tools/SearchListing.h"
#include "ai/tools/WebAddress.h"
#include "utils/text/Text.h"
#include "utils/text/UntrustedContent.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<std::vector<WebAccessing::SearchResult>> resultsOf(QString query, WebAccessing *web,
                                                               std::stop_token stop)
{
    try {
        std::vector<WebAccessing::SearchResult> results = co_await web->search(query, stop);
        co_return results;
    } catch (const std::exception &) {
        co_return std::vector<WebAccessing::SearchResult>(); // the page's own problem is the one to tell
    }
}

} // namespace

std::optional<QString> PageRescue::query(const QString &address)
{
    constexpr qsizetype longestQuery = 400; // characters, as for every search
    const auto url = WebAddress::parse(address);
    const auto query = url ? WebAddress::searchQuery(*url) : std::nullopt;
    return query && Text::characterCount(*query) <= longestQuery ? query : std::nullopt;
}

QCoro::Task<ToolOutcome> PageRescue::outcome(QString problem, std::optional<QString> query,
                                             std::shared_ptr<TurnContext> turn, WebAccessing *web,
                                             std::stop_token stop)
{
    if (query) {
        const std::vector<WebAccessing::SearchResult> results = co_await resultsOf(*query, web, stop);
        if (!results.empty()) {
            turn->webContentConsumed = turn->outsideContentInContext = true;
            const QString list = SearchListing::of(results, SearchListing::Images::leftOut);
            co_return ToolFailure::because(problem + u" I searched \""_s + UntrustedContent::name(*query) +
                                           u"\" automatically instead. Use these results (and more "
                                           u"search_web calls if needed) to answer; "
                                           "do not ask the user to paste the page.\n"_s +
                                           UntrustedContent::wrap(list, u"web search"_s));
        }
    }
    co_return ToolFailure::because(
        problem +
        u" Do not ask the user to paste anything yet; call search_web for the same information (for a "
        "property or listing, search its street address) and answer from the results."_s);
}

} // namespace morvane
