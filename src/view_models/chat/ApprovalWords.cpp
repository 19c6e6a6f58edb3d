#include "view_models/chat/ApprovalWords.h"

#include "utils/text/DesktopWords.h"
#include "utils/text/Json.h"
#include "utils/text/Product.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

QString ApprovalWords::detail(const AIToolCall &call)
{
    const auto arguments = Json::parseObject(call.argumentsJSON.toUtf8());
    if (!arguments)
        return call.argumentsJSON;
    // A call whose one argument tells it all shows that argument; any other shows everything it would send.
    static constexpr std::array telling{"query"_L1, "url"_L1, "name"_L1, "about"_L1, "title"_L1};
    for (const auto key : telling) {
        const auto value = Json::string(*arguments, key);
        if (value && arguments->size() == 1)
            return *value;
    }
    return arguments->isEmpty() ? QString() : call.argumentsJSON;
}

QString ApprovalWords::footnote(const AIToolCall &call, bool searchesWithOwnKey)
{
    if (call.name == "search_web"_L1)
        return searchesWithOwnKey
                   ? u"These words go to Brave Search with your own key."_s
                   : u"These words go to Brave Search through "_s + Product::name + u"'s search service."_s;
    if (call.name == "read_web_page"_L1)
        return u"%1 downloads this page from your %2, and its text joins this chat."_s.arg(
            Product::name, DesktopWords::here().device);
    return {};
}

} // namespace morvane
