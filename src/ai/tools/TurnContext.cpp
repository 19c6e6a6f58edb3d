#include "ai/tools/TurnContext.h"

#include "ai/tools/WebAddress.h"
#include "utils/text/LinkDetector.h"
#include "utils/text/UntrustedContent.h"

#include <algorithm>

namespace morvane {

std::shared_ptr<TurnContext> TurnContext::begin(Attendance attendance, std::optional<QString> chatID,
                                                Notes notes, const QString &words,
                                                const std::vector<AIMessage> &messages)
{
    auto context = std::make_shared<TurnContext>();
    context->unattended = attendance == Attendance::unattended;
    context->chatID = std::move(chatID);
    context->memoryAllowed = notes == Notes::kept;
    context->noteLinks(words);
    context->typedURLs = context->knownURLs;
    context->mark(messages);
    return context;
}

void TurnContext::note(const QUrl &url)
{
    knownURLs.insert(WebAddress::normalised(url));
    const QString host = WebAddress::host(url);
    if (!host.isEmpty())
        knownHosts.insert(host);
}

QString TurnContext::spellingOf(const QString &address) const
{
    const auto url = WebAddress::parse(address);
    const auto typed = url ? m_typed.find(WebAddress::normalised(*url)) : m_typed.end();
    return typed == m_typed.end() ? address : typed->second;
}

void TurnContext::noteLinks(const QString &text)
{
    for (const LinkDetector::Link &link : LinkDetector::find(text)) {
        note(link.url);
        m_typed.emplace(WebAddress::normalised(link.url), link.url.toString(QUrl::FullyEncoded));
    }
}

// Judged by the marker as text, so a message that merely quotes it counts as well.
void TurnContext::mark(const std::vector<AIMessage> &messages)
{
    const bool holdsOutside = std::any_of(messages.begin(), messages.end(), [](const AIMessage &message) {
        return message.role != AIMessage::Role::system &&
               (message.content.contains(UntrustedContent::beginMarker) || !message.imageDataURLs.isEmpty());
    });
    outsideContentInContext = sensitiveDataInContext = holdsOutside;
}

} // namespace morvane
