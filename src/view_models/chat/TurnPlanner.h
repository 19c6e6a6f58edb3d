#pragma once

#include "view_models/chat/TurnHistory.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class BannerDesk;
class ChatMessage;
class ChatStores;
class Clock;
class Conversation;
class MessageListModel;

// What one turn works on. The turn may outlast its chat being open.
struct TurnPlan {
    std::shared_ptr<ChatMessage> reply; // the record that the answer is written into
    std::shared_ptr<Conversation> conversation;
    TurnHistory::Items history;
    QString userWords = {};      // what the person wrote in this turn, without the text of an attachment
    bool isContinuation = false; // new text joins the reply's present text
    bool memoryAllowed = true;   // notes may be read and kept
    // What this reply stands in for once it is complete: replies without a word, and a question that only had
    // such replies.
    std::vector<std::shared_ptr<ChatMessage>> standsInFor = {};
};

// Makes the plan of a turn, with the records that it needs: from what the person sends, from a reply that
// failed, from one that hit its limit, from one that is to be made or asked for anew. A record that can't be
// saved is shown on the desk and kept for the next save; the turn goes on. GUI thread.
class TurnPlanner {
public:
    // All outlive this object. `messages` shows the conversation that is given to the members.
    struct Services {
        ChatStores &stores; // of which the active one is meant
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

    // A new version of the last message; nothing unless that is a reply that came to an end. The former
    // version stays stored and is set aside. All of it is saved at once, as it is of an edit.
    [[nodiscard]] std::optional<TurnPlan> regenerating(std::shared_ptr<Conversation> conversation);

    // Other words in place of the person's last message, and a new reply; nothing for any other message. What
    // stood there is set aside as a version of the reply, or goes when nobody had replied.
    [[nodiscard]] std::optional<TurnPlan> editing(const QUuid &message, const QString &text,
                                                  std::shared_ptr<Conversation> conversation);

    // The next turns send nothing of the file that was attached last.
    void forgetAttachment() { m_lastAttachment.reset(); }

    // The message that can be edited; null for none.
    [[nodiscard]] std::shared_ptr<ChatMessage> lastQuestion() const;

private:
    using Messages = std::vector<std::shared_ptr<ChatMessage>>;

    // Where new versions belong.
    struct Groups {
        std::optional<QUuid> question;
        std::optional<QUuid> reply;
    };

    [[nodiscard]] bool isBroken(const ChatMessage &message) const;
    [[nodiscard]] bool isWordless(const ChatMessage &message) const;
    [[nodiscard]] Messages repliesBelow(const ChatMessage &question) const;
    [[nodiscard]] std::shared_ptr<ChatMessage>
    makeQuestion(const QString &text, const std::optional<ImportedAttachment> &attachment,
                 const std::optional<QUuid> &group = {}) const;
    [[nodiscard]] std::shared_ptr<ChatMessage> makeReply(const ChatMessage &question,
                                                         const std::optional<QUuid> &group = {}) const;
    Groups setAside(const std::shared_ptr<ChatMessage> &question, const Messages &replies);
    void untitleIfFirst(const ChatMessage &question, Conversation &conversation) const;
    [[nodiscard]] std::optional<ImportedAttachment> attachmentOf(const ChatMessage &question) const;
    void add(const Messages &messages, Conversation &conversation);
    void addDocument(const ImportedAttachment &attachment);

    Services m_services;
    std::optional<ImportedAttachment> m_lastAttachment; // its content is stored nowhere
};

} // namespace morvane
