#include "ai/routing/ContextBuilder.h"

#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t fewestMessages = 4;
constexpr qsizetype longestQuote = 140;

// One line of at most `longestQuote` characters.
QString quoted(QString text)
{
    text = Text::trimmed(text.replace(u'\n', u' '));
    const QString start = Text::prefix(text, longestQuote);
    return start.size() == text.size() ? text : start + u"…"_s;
}

AIMessage asMessage(const ContextBuilder::HistoryItem &item)
{
    const auto role =
        item.role == MessageRole::assistant ? AIMessage::Role::assistant : AIMessage::Role::user;
    return {.role = role, .content = item.content, .imageDataURLs = item.images};
}

} // namespace

std::vector<AIMessage> ContextBuilder::build(const std::vector<HistoryItem> &items, std::int64_t maxMessages,
                                             const QString &systemPrompt,
                                             const std::optional<QString> &rollingSummary)
{
    const auto kept = static_cast<std::size_t>(std::max(maxMessages, fewestMessages));
    const std::size_t dropped = items.size() > kept ? items.size() - kept : 0;
    const auto firstKept = items.begin() + static_cast<std::ptrdiff_t>(dropped);

    std::vector<AIMessage> messages;
    messages.reserve(items.size() - dropped + 2);
    messages.push_back({.role = AIMessage::Role::system, .content = systemPrompt});
    if (dropped > 0) {
        const QString summary = rollingSummary ? *rollingSummary : digest({items.begin(), firstKept});
        messages.push_back({.role = AIMessage::Role::system,
                            .content = u"Context from earlier in this conversation ("_s +
                                       QString::number(dropped) + u" older messages not shown): "_s +
                                       summary});
    }
    std::transform(firstKept, items.end(), std::back_inserter(messages), asMessage);
    return messages;
}

QString ContextBuilder::digest(const std::vector<HistoryItem> &dropped)
{
    if (dropped.empty())
        return u"No earlier context."_s;
    QStringList sentences;
    const auto opening = std::find_if(dropped.begin(), dropped.end(),
                                      [](const HistoryItem &item) { return item.role == MessageRole::user; });
    if (opening != dropped.end())
        sentences += u"The conversation began with the user asking: “"_s + quoted(opening->content) + u"”"_s;
    if (dropped.size() > 1) {
        const HistoryItem &last = dropped.back();
        const QString role = last.role == MessageRole::assistant ? u"assistant"_s : u"user"_s;
        sentences += u"The most recent omitted turn was the "_s + role + u" saying: “"_s +
                     quoted(last.content) + u"”"_s;
    }
    return sentences.join(u' ');
}

} // namespace morvane
