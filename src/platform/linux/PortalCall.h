#pragma once

#include "platform/linux/BusNameOwner.h"
#include "platform/linux/ProcessPrivacy.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QHash>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

namespace morvane {

class Clock;

// One call of the desktop's portal whose answer comes by a signal (org.freedesktop.portal.Request, version
// 1), perhaps after the person was asked, and only from the very portal that took the call. Never blocks, and
// goes once it is answered. GUI thread.
class PortalCall final : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    static constexpr QLatin1StringView service{"org.freedesktop.portal.Desktop"};
    static constexpr QLatin1StringView object{"/org/freedesktop/portal/desktop"};
    // A person may be choosing for as long.
    static constexpr std::chrono::seconds patience{120};

    enum class End {
        done,
        dismissed, // by the person
        declined,  // in another way
        failed,    // no answer: `error` says why, if the portal didn't just go, or take too long
        noPortal   // this session has none, or one that doesn't know the method
    };
    struct Answer {
        End end = End::failed;
        QVariantMap results = {};
        QString portal = {}; // its unique name on the bus
        QDBusError error = {};
    };
    using Answered = std::function<void(const Answer &)>;

    // `arguments` without the options, which every method takes last. A call that outlives `parent` is
    // dropped.
    PortalCall(QDBusConnection bus, const QString &interface, const QString &method, QVariantList arguments,
               QVariantMap options, Answered answered, QObject *parent);

    // Tells the portal that nobody waits for the answer any more. One that comes all the same is told.
    void close();

    // What is asked in one call, and no longer than `patience`; without a clock for as long as it takes.
    struct Question {
        QString interface;
        QString method;
        QVariantList arguments;
    };
    // `clock` outlives the task. Throws CancelledError, and closes the call then.
    [[nodiscard]] static QCoro::Task<Answer> ask(QDBusConnection bus, Question question, Clock *clock,
                                                 std::stop_token stop);

    // A name that a portal makes an object's path from.
    [[nodiscard]] static QString newToken();
    // The path of this connection's object of that kind ("request", "session").
    [[nodiscard]] static QString pathOf(const QDBusConnection &bus, QStringView kind, const QString &token);

private Q_SLOTS:
    void responded(uint response, const QVariantMap &results);

private:
    void portalChanged(const QString &former, const QString &now);
    void listenAt(const QString &request);
    void finish(Answer answer);

    QDBusConnection m_bus;
    BusNameOwner m_owner;
    std::unique_ptr<ProcessPrivacy::Pause> m_visible; // until the portal has looked who asks
    Answered m_answered;
    QString m_request;               // the path of the portal's object for this call
    QString m_portal;                // empty until it has taken the call
    QHash<QString, Answer> m_before; // what came until then, by its senders
};

} // namespace morvane
