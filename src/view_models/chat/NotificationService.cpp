#include "view_models/chat/NotificationService.h"

#include "utils/text/Identifier.h"
#include "utils/text/Product.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString ofGhost = u"ghost"_s;
const QString ofApproval = u"approval"_s;

QString keyOf(const QUuid &conversation)
{
    return u"chat-"_s + Identifier::text(conversation);
}

} // namespace

NotificationService::NotificationService(NotificationPosting &desktop, QObject *parent)
    : QObject(parent)
    , m_desktop(desktop)
{
    connect(&desktop, &NotificationPosting::chosen, this, [this](const QString &key) {
        const auto found = m_notices.find(key);
        if (found == m_notices.end())
            return;
        const QUuid chat = found->second.chat; // what it leads to takes it back
        Q_EMIT chosen(chat);
    });
    connect(&desktop, &NotificationPosting::dismissed, this,
            [this](const QString &key) { m_notices.erase(key); });
}

void NotificationService::setScreenLocked(bool locked)
{
    if (std::exchange(m_isScreenLocked, locked) == locked)
        return;
    for (const auto &[key, notice] : m_notices) {
        if (locked)
            m_desktop.withdraw(key);
        else
            m_desktop.post(notice);
    }
}

void NotificationService::replyReady(const QUuid &conversation, const QString &title)
{
    post({.key = keyOf(conversation), .title = u"Reply ready"_s, .body = title, .chat = conversation});
}

void NotificationService::replyFailed(const QUuid &conversation, const QString &message,
                                      const QString &suggestion)
{
    post({.key = keyOf(conversation), .title = message, .body = suggestion, .chat = conversation});
}

void NotificationService::withdrawChat(const QUuid &conversation)
{
    withdraw(keyOf(conversation));
}

void NotificationService::ghostReplyReady()
{
    post({.key = ofGhost, .title = u"Reply ready"_s, .isPassing = true});
}

void NotificationService::ghostReplyFailed(const QString &message, const QString &suggestion)
{
    post({.key = ofGhost, .title = message, .body = suggestion, .isPassing = true});
}

void NotificationService::withdrawGhostReplies()
{
    withdraw(ofGhost);
}

void NotificationService::approvalWaits(const QString &verb)
{
    post({.key = ofApproval,
          .title = u"%1 waits for your answer"_s.arg(Product::name),
          .body = verb,
          .isWaitedFor = true});
}

void NotificationService::withdrawApproval()
{
    withdraw(ofApproval);
}

void NotificationService::withdrawAll()
{
    for (const auto &[key, notice] : std::exchange(m_notices, {}))
        m_desktop.withdraw(key);
}

void NotificationService::post(const DesktopNotice &notice)
{
    m_notices.insert_or_assign(notice.key, notice);
    if (!m_isScreenLocked)
        m_desktop.post(notice);
}

void NotificationService::withdraw(const QString &key)
{
    m_notices.erase(key);
    m_desktop.withdraw(key); // an earlier run's may stand there still
}

} // namespace morvane
