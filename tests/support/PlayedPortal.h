#pragma once

#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

namespace morvane {

// A desktop's portal, as far as all of them are alike: a question is answered with a handle at once, and at
// the handle when the person has decided.
class PlayedPortal : public PlayedService {
public:
    PlayedPortal(QDBusConnection bus, Answer answer)
        : PlayedService(std::move(bus), QStringLiteral("org.freedesktop.portal.Desktop"), std::move(answer))
    {}

    // Which stand last in every question.
    [[nodiscard]] static QVariantMap optionsOf(const QDBusMessage &call)
    {
        return qdbus_cast<QVariantMap>(call.arguments().constLast());
    }
    // The path of a "request" or a "session" as the program expects it, or one of the portal's own.
    [[nodiscard]] static QString handleOf(const QDBusMessage &call,
                                          const QString &kind = QStringLiteral("request"), QString token = {})
    {
        if (token.isEmpty())
            token = optionsOf(call)
                        .value(kind == QLatin1StringView("request") ? QStringLiteral("handle_token")
                                                                    : kind + QStringLiteral("_handle_token"))
                        .toString();
        return QStringLiteral("/org/freedesktop/portal/desktop/%1/%2/%3")
            .arg(kind, call.service().mid(1).replace(u'.', u'_'), token);
    }
    // Says yes to the question itself.
    static void take(const QDBusMessage &call, const QDBusConnection &on)
    {
        on.send(call.createReply(QVariant::fromValue(QDBusObjectPath(handleOf(call)))));
    }
    // What the person decided: 0 is yes, 1 no, 2 neither.
    static void decide(const QString &handle, const QDBusConnection &by, uint response,
                       const QVariantMap &results = {})
    {
        auto signal = QDBusMessage::createSignal(handle, QStringLiteral("org.freedesktop.portal.Request"),
                                                 QStringLiteral("Response"));
        signal.setArguments({response, results});
        by.send(signal);
    }
    // Both at once.
    static void answer(const QDBusMessage &call, const QDBusConnection &on, uint response,
                       const QVariantMap &results = {})
    {
        take(call, on);
        decide(handleOf(call), on, response, results);
    }
};

} // namespace morvane
