#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <optional>

namespace morvane {

// Whether there is anything to be seen: displays that a compositor put to sleep, and a lid that is closed
// over the only one. GUI thread.
class Displays : public QObject {
    Q_OBJECT
public:
    Displays(std::optional<QDBusConnection> session, std::optional<QDBusConnection> system,
             QObject *parent = nullptr);

    [[nodiscard]] bool areAsleep() const;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &values, const QStringList &gone);

private:
    void watch(QDBusConnection bus, const QString &service, const QString &path, const QString &interface);

    bool m_isSavingPower = false;
    bool m_isLidClosed = false;
};

} // namespace morvane
