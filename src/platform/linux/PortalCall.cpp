#include "platform/linux/PortalCall.h"

#include "async/AsyncStream.h"
#include "async/CancelledError.h"
#include "async/Clock.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>
#include <QUuid>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString requests = u"org.freedesktop.portal.Request"_s;
// The process can be looked at meanwhile, so not for as long as a call may take.
constexpr int replyMilliseconds = 5000;
constexpr qsizetype mostSenders = 4; // that are heard before the portal has replied

bool saysThatNoneIsThere(const QDBusError &error)
{
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownObject:
    case QDBusError::NoServer:
    case QDBusError::Disconnected:
        return true;
    default:
        return error.name().startsWith("org.freedesktop.DBus.Error.Spawn."_L1) ||
               error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
    }
}

PortalCall::End endOf(uint response)
{
    switch (response) {
    case 0:
        return PortalCall::End::done;
    case 1:
        return PortalCall::End::dismissed;
    default:
        return PortalCall::End::declined;
    }
}

} // namespace

PortalCall::PortalCall(QDBusConnection bus, const QString &interface, const QString &method,
                       QVariantList arguments, QVariantMap options, Answered answered, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
    , m_owner(m_bus, service)
    , m_visible(std::make_unique<ProcessPrivacy::Pause>())
    , m_answered(std::move(answered))
{
    const QString token = newToken();
    connect(&m_owner, &BusNameOwner::changed, this, &PortalCall::portalChanged);
    listenAt(pathOf(m_bus, u"request", token)); // before the call, since the answer may come first
    auto call = QDBusMessage::createMethodCall(service, object, interface, method);
    options.insert(u"handle_token"_s, token);
    arguments.append(options);
    call.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, replyMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_visible.reset();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (reply.isError())
            return finish({.end = saysThatNoneIsThere(reply.error()) ? End::noPortal : End::failed,
                           .error = reply.error()});
        m_portal = m_owner.current();
        listenAt(reply.value().path()); // old portals choose their own
        if (m_before.contains(m_portal))
            finish(m_before.value(m_portal));
    });
}

QCoro::Task<PortalCall::Answer> PortalCall::ask(QDBusConnection bus, Question question, Clock *clock,
                                                std::stop_token stop)
{
    auto [answers, producer] = AsyncStream<Answer>::make();
    const Answered tell = [producer = producer](const Answer &answer) mutable {
        producer.yield(answer);
        producer.finish();
    };
    const QPointer<PortalCall> call =
        new PortalCall(bus, question.interface, question.method, question.arguments, {}, tell, nullptr);
    const auto giveUp = [call] {
        if (call)
            call->close();
        delete call;
    };
    const auto alarm = clock ? clock->after(patience,
                                            [giveUp, tell] {
                                                giveUp();
                                                tell(Answer());
                                            })
                             : nullptr;
    try {
        const std::optional<Answer> answer = co_await answers.next(stop);
        co_return answer.value_or(Answer());
    } catch (const CancelledError &) {
        giveUp();
        throw;
    }
}

QString PortalCall::newToken()
{
    return u"morvane"_s + QUuid::createUuid().toString(QUuid::Id128);
}

QString PortalCall::pathOf(const QDBusConnection &bus, QStringView kind, const QString &token)
{
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    return u"%1/%2/%3/%4"_s.arg(QString(object), kind, sender, token);
}

void PortalCall::close()
{
    m_bus.send(QDBusMessage::createMethodCall(service, m_request, requests, u"Close"_s));
}

// By no sender's name: to learn who has it now the library would wait for the bus, and end the process where
// that is gone.
void PortalCall::listenAt(const QString &request)
{
    if (request == std::exchange(m_request, request))
        return;
    m_bus.connect({}, request, requests, u"Response"_s, this, SLOT(responded(uint, QVariantMap)));
}

// Another program could send such a signal as well.
void PortalCall::responded(uint response, const QVariantMap &results)
{
    const QString sender = message().service();
    Answer answer{.end = endOf(response), .results = results, .portal = sender};
    if (sender == m_portal)
        finish(std::move(answer));
    else if (m_portal.isEmpty() && m_before.size() < mostSenders)
        m_before.insert(sender, answer);
}

void PortalCall::portalChanged(const QString &former, const QString &now)
{
    if (!former.isEmpty() && now.isEmpty())
        finish({.end = End::failed, .portal = former});
}

void PortalCall::finish(Answer answer)
{
    deleteLater();
    if (const auto answered = std::exchange(m_answered, {}))
        answered(answer);
}

} // namespace morvane
