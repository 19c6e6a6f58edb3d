#include "view_models/chat/TurnHistory.h"

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "persistence/ConversationRepository.h"
#include "utils/bytes/Base64.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/ToolLabels.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString screenAttachmentName = u"What's on your screen"_s;

void add(TurnHistory::Items &items, const MessageListModel &messages, const ChatMessage &message)
{
    const auto role = message.knownRole();
    const QString text = messages.textOf(message);
    if (role && !text.isEmpty())
        items.push_back({*role, text, {}});
}

bool hasScreenReading(const ChatMessage &message)
{
    const auto summary = message.toolSummary();
    if (summary && summary->split(u'\n').contains(ToolLabels::finishedScreenReading()))
        return true;
    return message.role() == MessageRole::user && message.attachmentName() == screenAttachmentName;
}

bool hasPicture(const ChatMessage &message, ConversationRepository &repository)
{
    if (message.role() != MessageRole::user || !message.attachmentID())
        return false;
    const auto document = repository.findDocument(*message.attachmentID());
    return document && document->fileExtension() == "image"_L1;
}

} // namespace

TurnHistory::Items TurnHistory::of(const MessageListModel &messages, const ChatMessage *except)
{
    Items items;
    for (const auto &message : messages.messages()) {
        if (message.get() != except)
            add(items, messages, *message);
    }
    return items;
}

TurnHistory::Items TurnHistory::upTo(const MessageListModel &messages, const ChatMessage &last)
{
    Items items;
    for (const auto &message : messages.messages()) {
        add(items, messages, *message);
        if (message.get() == &last)
            break;
    }
    return items;
}

void TurnHistory::attach(Items &history, const ImportedAttachment &attachment, const QString &text)
{
    const auto newest = std::find_if(history.rbegin(), history.rend(),
                                     [](const auto &item) { return item.role == MessageRole::user; });
    if (newest == history.rend())
        return;
    newest->content = attachment.context() + u"\n\nUser request: "_s + text;
    if (attachment.imageData)
        newest->images = {u"data:image/jpeg;base64,"_s +
                          QString::fromLatin1(Base64::encode(*attachment.imageData))};
}

SensitiveDataSet TurnHistory::carriedBy(const Items &history, const Conversation &conversation,
                                        ConversationRepository &repository)
{
    SensitiveDataSet carried;
    const auto hasImages = [](const auto &item) { return !item.images.isEmpty(); };
    if (std::any_of(history.begin(), history.end(), hasImages))
        carried |= SensitiveData::image;
    if (conversation.carriesScreenText())
        carried |= SensitiveData::screenText;
    if (conversation.carriesPicture())
        carried |= SensitiveData::image;
    for (const auto &message : conversation.messages()) {
        if (hasScreenReading(*message))
            carried |= SensitiveData::screenText;
        if (hasPicture(*message, repository))
            carried |= SensitiveData::image;
    }
    return carried;
}

} // namespace morvane
