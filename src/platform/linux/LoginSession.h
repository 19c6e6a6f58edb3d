#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QVariantMap>

#include <optional>

class QDBusObjectPath;

namespace morvane {

// The session as logind keeps it: locked, inactive, idle, and the machine about to sleep, which it puts off
// until everybody who hears changed() has done what they do. Without logind nothing is ever told. GUI thread.
class LoginSession : public QObject {
    Q_OBJECT
public:
    enum class Sleep {
        putOff,
        ignored // nothing has to be done before the machine sleeps
    };

    explicit LoginSession(QDBusConnection bus, QObject *parent = nullptr)
        : LoginSession(std::move(bus), Sleep::putOff, parent)
    {}
    LoginSession(QDBusConnection bus, Sleep sleep, QObject *parent = nullptr);

    [[nodiscard]] bool isLocked() const { return m_isLocked; }
    [[nodiscard]] bool isInactive() const { return m_isInactive; }
    [[nodiscard]] bool isAsleep() const { return m_isAsleep; }
    // Zero while the desktop doesn't say that it is idle.
    [[nodiscard]] double idleSeconds() const;
    // The desktop has used the hint, which logind has whether anybody sets it or not.
    [[nodiscard]] bool tellsIdleTime() const { return m_tellsIdleTime; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void locked() { setLocked(true); }
    void unlocked() { setLocked(false); }
    void propertiesChanged(const QString &interface, const QVariantMap &values, const QStringList &gone);
    void preparingForSleep(bool begins);

private:
    void findSession();
    void watch(const QString &path);
    void read();
    void take(const QVariantMap &values);
    void setLocked(bool locked);
    void holdSleep();

    QDBusConnection m_bus;
    QString m_path; // empty until it is known
    bool m_isLocked = false;
    bool m_isInactive = false;
    bool m_isAsleep = false;
    bool m_tellsIdleTime = false;
    std::optional<quint64> m_idleSince;            // microseconds of the machine's monotonic clock
    std::optional<QDBusUnixFileDescriptor> m_hold; // what puts sleep off
};

} // namespace morvane
