#pragma once

#include "models/Conversation.h"

#include <QObject>

namespace morvane {

class BannerDesk;
class ChatStores;

// What the person does to messages that stand in a chat: deletes one, takes that back, shows another version.
// What can't be saved is shown on the banner's desk and kept for the next save. GUI thread.
class MessageDesk : public QObject {
    Q_OBJECT
public:
    // Both outlive this object.
    MessageDesk(ChatStores &stores, BannerDesk &banner, QObject *parent = nullptr);

    // The message with all that stands and falls with it. The store has it no more; it can be put back until
    // forgetDeleted(), which comes with anything that is added to the chat.
    void remove(const ChatMessage &message, std::shared_ptr<Conversation> conversation);
    void undo();
    void forgetDeleted();
    // How many messages went that had been shown; 0 when there is nothing to take back.
    [[nodiscard]] int deletedCount() const { return m_deletedCount; }

    // Shows the reply's version that stands so many further on; nothing when there is none.
    void step(const ChatMessage &reply, int distance, const Conversation &conversation);

Q_SIGNALS:
    void deletedChanged();
    void transcriptChanged(); // other messages are shown now

private:
    void setDeletedCount(int count);
    template <typename Change>
    void saving(Change change);

    ChatStores &m_stores;
    BannerDesk &m_banner;
    std::shared_ptr<Conversation> m_conversation; // that messages were deleted from
    Conversation::Messages m_before;              // what was stored in it, those included
    int m_deletedCount = 0;
};

} // namespace morvane
