#pragma once

#include <QObject>
#include <QString>
#include <QUuid>

#include <exception>

namespace morvane {

class ChatMessage;
class CompanionViewModel;
class Conversation;
class ReplyNotifying;
class ReplyReader;

// Brings the end of a turn to the person: aloud, and where the window is not in front by a notification,
// which never shows a reply's text. A turn that waits for their yes is told of the same way. GUI thread.
class ReplyDelivery : public QObject {
    Q_OBJECT
public:
    // All outlive this object. Without notifications none is posted.
    struct Services {
        CompanionViewModel &companion;
        ReplyReader &reader;
        ReplyNotifying *notifications = nullptr;
    };

    explicit ReplyDelivery(Services services, QObject *parent = nullptr);

    void setWindowInFront(bool inFront);
    // The saved chat that the window shows, or null; what was told of it is taken back once the window is in
    // front.
    void setOpenChat(const QUuid &conversation);

    // Of a Ghost chat not even the title is told.
    enum class Kind { saved, ghost };

    void deliver(const ChatMessage &reply, const Conversation &conversation, Kind kind);
    void tellFailure(const std::exception_ptr &error, const Conversation &conversation, Kind kind);
    // What was told of a chat that is gone is taken back.
    void withdrawChat(const QUuid &conversation);
    // What was told of Ghost chats is taken back.
    void withdrawGhosts();
    void tellApproval(const QString &verb);
    void withdrawApproval();

private:
    void withdrawRead();

    Services m_services;
    QUuid m_openChat;
    bool m_isWindowInFront = true;
};

} // namespace morvane
