#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

class QDBusMessage;

namespace morvane {

// The screen saver of the session, whichever desktop's, and what its portal says of it. GUI thread.
class ScreenSavers : public QObject {
    Q_OBJECT
public:
    enum class Portal { asked, left };

    explicit ScreenSavers(QDBusConnection bus, Portal portal = Portal::asked, QObject *parent = nullptr);
    ~ScreenSavers() override;

    [[nodiscard]] bool isRunning() const { return m_isActive || m_isActiveOfPortal; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void activeChanged(bool active);
    void stateChanged(const QDBusMessage &signal);

private:
    void watchPortal();
    void tellPortal(const QString &path, const QString &interface, const QString &method,
                    const QVariantList &arguments);

    QDBusConnection m_bus;
    QString m_portalSession;
    bool m_isActive = false;
    bool m_isActiveOfPortal = false;
};

} // namespace morvane
