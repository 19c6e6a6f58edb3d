#pragma once

#include "platform/linux/ProcessPrivacy.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace morvane {

// One call of the desktop's portal whose answer comes by a signal (org.freedesktop.portal.Request), perhaps
// after the person was asked, and only from the very portal that took the call. Never blocks, and goes once
// it is answered. GUI thread.
class PortalCall final : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    static constexpr QLatin1StringView service{"org.freedesktop.portal.Desktop"};
    static constexpr QLatin1StringView object{"/org/freedesktop/portal/desktop"};

    enum class End {
        done,
        declined, // by the person or by the desktop
        noPortal  // this session has none, or one that doesn't know the method
    };
    // `portal` is its unique name on the bus.
    using Answered = std::function<void(End end, const QVariantMap &results, const QString &portal)>;

    // `arguments` without the options, which every method takes last. A call that outlives `parent` is
    // dropped.
    PortalCall(QDBusConnection bus, const QString &interface, const QString &method, QVariantList arguments,
               QVariantMap options, Answered answered, QObject *parent);

    // A name that a portal makes an object's path from.
    [[nodiscard]] static QString newToken();
    // The path of this connection's object of that kind ("request", "session").
    [[nodiscard]] static QString pathOf(const QDBusConnection &bus, QStringView kind, const QString &token);
    [[nodiscard]] static bool saysThatNoneIsThere(const QDBusError &error);

private Q_SLOTS:
    void responded(uint response, const QVariantMap &results);

private:
    void finish(End end, const QVariantMap &results);

    std::unique_ptr<ProcessPrivacy::Pause> m_visible; // until the portal has looked who asks
    Answered m_answered;
    QString m_portal; // empty until it has taken the call
};

} // namespace morvane
