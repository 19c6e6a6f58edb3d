#pragma once

#include "view_models/chat/NotificationPosting.h"
#include "view_models/chat/ReplyPorts.h"

#include <map>

namespace morvane {

// What the person is told while the window is not in front: at most a chat's title, never a word of it, and
// nothing at all on a locked screen, where it waits. One for each chat, one for the Ghost chat and one for
// what waits for a yes, which is answered in the window alone. GUI thread.
class NotificationService final : public QObject, public morvane::ReplyNotifying {
    Q_OBJECT

public:
    // `desktop` outlives this object.
    explicit NotificationService(NotificationPosting &desktop, QObject *parent = nullptr);

    // On the desktop's own lock what is shown is taken back, until it opens.
    void setScreenLocked(bool locked);

    void replyReady(const QUuid &conversation, const QString &title) override;
    void replyFailed(const QUuid &conversation, const QString &message, const QString &suggestion) override;
    void withdrawChat(const QUuid &conversation) override;
    void ghostReplyReady() override;
    void ghostReplyFailed(const QString &message, const QString &suggestion) override;
    void withdrawGhostReplies() override;
    void approvalWaits(const QString &verb) override;
    void withdrawApproval() override;
    void withdrawAll() override;

Q_SIGNALS:
    // A notification was clicked. Null when it is about no saved chat.
    void chosen(const QUuid &conversation);

private:
    void post(const DesktopNotice &notice);
    void withdraw(const QString &key);

    NotificationPosting &m_desktop;
    bool m_isScreenLocked = false;
    std::map<QString, DesktopNotice> m_notices; // by their keys; shown, or waiting for the screen
};

} // namespace morvane
