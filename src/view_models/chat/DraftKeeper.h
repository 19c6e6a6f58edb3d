#pragma once

#include <QString>

#include <chrono>
#include <memory>

namespace morvane {

class Alarm;
class ChatStores;
class Clock;
class Conversation;

// Keeps what the person has begun to write with its chat. It is written some time after a key and not with
// each, and at once when the chat is left. A draft that can't be saved stays in memory for the next save.
// GUI thread.
class DraftKeeper {
public:
    static constexpr std::chrono::milliseconds writeInterval{2000};

    // Both outlive this object.
    DraftKeeper(ChatStores &stores, Clock &clock);
    ~DraftKeeper();
    DraftKeeper(const DraftKeeper &) = delete;
    DraftKeeper &operator=(const DraftKeeper &) = delete;

    // The draft of this chat is that text now.
    void note(const std::shared_ptr<Conversation> &conversation, const QString &text);
    void write();
    // The chat has none any more, and its store is told at once.
    void forget(Conversation &conversation);

    // The draft was sent: the next save of the chat forgets it.
    void wipe(Conversation &conversation);

private:
    void save(const Conversation &conversation);

    ChatStores &m_stores;
    Clock &m_clock;
    std::shared_ptr<Conversation> m_noted; // whose draft is yet to be written; null for none
    QString m_text;
    std::unique_ptr<Alarm> m_due;
};

} // namespace morvane
