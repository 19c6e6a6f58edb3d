#pragma once

#include "platform/linux/ProcessPrivacy.h"

#include <QObject>
#include <QVariant>

#include <memory>

class QDBusVariant;

namespace morvane {

// Whether the desktop prefers dark windows, from the settings portal (org.freedesktop.portal.Settings, key
// color-scheme: 1 dark, anything else light). Without a bus or a portal it stays light. Never blocks.
class DesktopAppearance : public QObject {
    Q_OBJECT
public:
    explicit DesktopAppearance(QObject *parent = nullptr);

    [[nodiscard]] bool isDark() const { return m_isDark; }

Q_SIGNALS:
    void darkChanged(bool dark);

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void take(const QVariant &colorScheme);

    bool m_isDark = false;
    std::unique_ptr<ProcessPrivacy::Pause> m_visible; // until the portal has answered, or has not
};

} // namespace morvane
