#pragma once

#include "platform/linux/BusNameOwner.h"
#include "services/GlobalShortcutBinding.h"

#include <QDBusConnection>
#include <QPointer>
#include <QSet>

#include <map>

class QDBusMessage;
class QDBusPendingCall;

namespace morvane {

class PortalCall;

// Keys by the desktop's portal (org.freedesktop.portal.GlobalShortcuts, version 1 and later), as Wayland has
// them: the person chooses the key in the desktop's own settings, and what is wished for is only what those
// begin with. GUI thread.
class PortalGlobalShortcuts final : public GlobalShortcutBinding {
    Q_OBJECT
public:
    explicit PortalGlobalShortcuts(QDBusConnection bus, QObject *parent = nullptr);
    ~PortalGlobalShortcuts() override;

    void bind(const std::vector<Wish> &wishes) override;
    void release() override;
    [[nodiscard]] Binding binding(GlobalShortcut shortcut) const override;
    [[nodiscard]] bool isChosenByDesktop() const override { return true; }
    [[nodiscard]] bool canShowDesktopSettings() const override;
    void showDesktopSettings() override;

private Q_SLOTS:
    void activated(const QDBusMessage &signal);
    void deactivated(const QDBusMessage &signal);
    void shortcutsChanged(const QDBusMessage &signal);
    void sessionClosed(const QDBusMessage &signal);

private:
    void portalChanged(const QString &former, const QString &now);
    void introduce();
    void askVersion();
    void renew();
    void open();
    void begin(const QVariantMap &results, const QString &portal);
    [[nodiscard]] QVariant wishes() const;
    void bindIn(const QVariant &bound);
    void take(const QVariant &shortcuts);
    void setAll(State state);
    void letGo();
    QDBusPendingCall closeSession();
    [[nodiscard]] bool isOfSession(const QDBusMessage &signal) const;

    QDBusConnection m_bus;
    BusNameOwner m_owner;
    std::vector<Wish> m_wishes;
    int m_round = 0;                              // of wishes
    std::map<GlobalShortcut, Binding> m_bindings; // of what is wished for
    bool m_isIntroduced = false;
    bool m_isRenewing = false;   // a session comes or goes
    uint m_version = 0;          // of the portal's interface; 0: unknown
    QPointer<PortalCall> m_call; // the one that is under way
    QString m_portal;            // its unique name; empty without a session
    QString m_session;           // its path; empty without one
    QSet<GlobalShortcut> m_held;
};

} // namespace morvane
