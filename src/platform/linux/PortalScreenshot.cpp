#include "platform/linux/PortalScreenshot.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QRandomGenerator>
#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString screenshots = u"org.freedesktop.portal.Screenshot"_s;
const QString requests = u"org.freedesktop.portal.Request"_s;
constexpr uint granted = 0;
// The portal answers the question at once, and the person later. The process can be looked at until it does.
constexpr int patienceMilliseconds = 5000;

PortalScreenshot::End endOf(const QDBusError &error)
{
    using End = PortalScreenshot::End;
    if (error.type() == QDBusError::Disconnected)
        return End::BusGone;
    switch (error.type()) {
    case QDBusError::ServiceUnknown: // no portal
    case QDBusError::UnknownMethod:  // one that has nobody to take pictures, said in three ways
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownObject:
        return End::Absent;
    default:
        break;
    }
    const bool isDenial = error.type() == QDBusError::AccessDenied ||
                          error.name() == "org.freedesktop.portal.Error.NotAllowed"_L1;
    return isDenial ? End::Refused : End::Failed;
}

} // namespace

PortalScreenshot::PortalScreenshot(const QDBusConnection &bus)
    : m_bus(bus)
{
    m_bus.connect({}, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"NameOwnerChanged"_s, {service},
                  {}, this, SLOT(portalLeft(QString, QString, QString)));
    ask();
}

PortalScreenshot::~PortalScreenshot()
{
    if (!m_file.isEmpty())
        QFile::remove(m_file);
}

void PortalScreenshot::ask()
{
    const QString token = u"morvane%1"_s.arg(QRandomGenerator::system()->generate64());
    // Where the answer will come from, listened to ahead of the question: it may be faster than the reply.
    QString sender = m_bus.baseService().mid(1);
    listenAt(path + u"/request/"_s + sender.replace(u'.', u'_') + u'/' + token);
    auto call = QDBusMessage::createMethodCall(service, path, screenshots, u"Screenshot"_s);
    call.setArguments(
        {QString(), QVariantMap{{u"handle_token"_s, token}, {u"interactive"_s, false}, {u"modal"_s, false}}});
    m_visible = std::make_unique<ProcessPrivacy::Pause>();
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, patienceMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_visible.reset();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (reply.isError())
            return finish(endOf(reply.error()), reply.error().name());
        m_portal = reply.reply().service();
        listenAt(reply.value().path()); // old portals choose their own
    });
}

// By no sender's name: to learn who has it now the library would wait for the bus, and end the process where
// that is gone.
void PortalScreenshot::listenAt(const QString &request)
{
    if (request == m_request)
        return;
    m_request = request;
    m_bus.connect({}, request, requests, u"Response"_s, this, SLOT(answered(uint, QVariantMap)));
}

// Another program could send such a signal as well. The portal replies before it answers.
void PortalScreenshot::answered(uint response, const QVariantMap &results)
{
    if (!m_portal.isEmpty() && message().service() == m_portal)
        take(response, results);
}

void PortalScreenshot::take(uint response, const QVariantMap &results)
{
    const QUrl place(results.value(u"uri"_s).toString());
    if (!m_end.isThere() && place.isLocalFile())
        m_file = place.toLocalFile();
    if (response != granted)
        finish(End::Refused, u"the portal answered %1"_s.arg(response));
    else if (m_file.isEmpty())
        finish(End::Failed, u"the portal named no file"_s);
    else
        finish(End::Taken, {});
}

void PortalScreenshot::portalLeft(const QString &, const QString &former, const QString &now)
{
    if (!former.isEmpty() && now.isEmpty())
        finish(End::Failed, u"the portal is gone"_s);
}

void PortalScreenshot::finish(End end, const QString &words)
{
    if (m_end.isThere())
        return;
    m_words = words;
    if (m_isAbandoned)
        deleteLater();
    m_end.resolve(end);
}

void PortalScreenshot::abandon(std::unique_ptr<PortalScreenshot> question)
{
    if (question->m_end.isThere())
        return;
    question->m_isAbandoned = true;
    auto *left = question.release(); // goes with the answer
    left->m_bus.send(QDBusMessage::createMethodCall(service, left->m_request, requests, u"Close"_s));
}

} // namespace morvane
