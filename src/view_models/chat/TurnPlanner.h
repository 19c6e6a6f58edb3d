#pragma once

#include "view_models/chat/TurnHistory.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class BannerDesk;
class ChatMessage;
class Clock;
class Conversation;
class ConversationRepository;
class MessageListModel;

// What one turn works on. The turn may outlast its chat being open.
struct TurnPlan {
    std::shared_ptr<ChatMessage> reply; // the record that the answer is written into
    std::shared_ptr<Conversation> conversation;
    TurnHistory::Items history;
    QString userWords = {};      // what the person wrote in this turn, without the text of an attachment
    bool isContinuation = false; // new text joins the reply's present text
    // Replies without a word that this one stands in for, once it is complete.
    std::vector<std::shared_ptr<ChatMessage>> standsInFor = {};
};

// Makes the plan of a turn, with the records that it needs: from what the person sends, from a reply that
// failed, from one that hit its limit. A record that can't be saved is shown on the desk and kept for the
// next save; the turn goes on. GUI thread.
class TurnPlanner {
public:
    // All outlive this object. `messages` shows the conversation that is given to the members.
    struct Services {
        ConversationRepository &repository;
        MessageListModel &messages;
        BannerDesk &banner;
        Clock &clock;
    };

    explicit TurnPlanner(Services services)
        : m_services(services)
    {}

    // Only an attachment may come without words.
    [[nodiscard]] TurnPlan sending(const QString &text, const std::optional<ImportedAttachment> &attachment,
                                   std::shared_ptr<Conversation> conversation);

    // A new reply below one that failed or that the end of the program cut off; nothing unless the last
    // message is such a reply. Its words stay in the chat.
    [[nodiscard]] std::optional<TurnPlan> retrying(std::shared_ptr<Conversation> conversation);

    // Nothing unless the message is a reply that hit its limit.
    [[nodiscard]] std::optional<TurnPlan> continuing(const QUuid &message,
                                                     std::shared_ptr<Conversation> conversation);

private:
    [[nodiscard]] bool isBroken(const ChatMessage &message) const;
    void addQuestion(const QString &text, const std::optional<ImportedAttachment> &attachment,
                     Conversation &conversation);
    std::shared_ptr<ChatMessage> addReply(Conversation &conversation);
    void add(const std::shared_ptr<ChatMessage> &message, Conversation &conversation);
    void addDocument(const ImportedAttachment &attachment);

    Services m_services;
};

} // namespace morvane
