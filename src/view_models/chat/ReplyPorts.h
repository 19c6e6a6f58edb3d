#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

// What the chat asks of the desktop around it. Adapters live with the platform; without one nothing happens.

// Tells the person about a turn that ended, or waits for their yes, while the window is not in front. Never
// shows reply text, nor what a call would send.
class ReplyNotifying {
public:
    virtual ~ReplyNotifying() = default;
    virtual void replyReady(const QUuid &conversation, const QString &title) = 0;
    // Of a Ghost chat nothing is said but this, until it is left.
    virtual void ghostReplyReady() = 0;
    virtual void ghostReplyFailed(const QString &message, const QString &suggestion) = 0;
    virtual void withdrawGhostReplies() = 0;
    virtual void replyFailed(const QUuid &conversation, const QString &message,
                             const QString &suggestion) = 0;
    // The person has that chat before them, or it is gone. Also what an earlier run told of it, where the
    // desktop still shows that.
    virtual void withdrawChat(const QUuid &conversation) = 0;
    // `verb` says what is asked for. It is taken back when there is nothing left to answer.
    virtual void approvalWaits(const QString &verb) = 0;
    virtual void withdrawApproval() = 0;
    // Whatever of it is still shown: titles and failures may not outlast a lock.
    virtual void withdrawAll() = 0;
};

} // namespace morvane
