#pragma once

#include "platform/linux/StatusNotifierFace.h"
#include "platform/linux/TrayMenu.h"
#include "view_models/TrayIcon.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

#include <optional>

namespace morvane {

// The tray icon, by StatusNotifierItem and a menu by DBusMenu, on the session's bus.
//
// Ours, and not Qt's: Qt offers its own only to programs that link its widgets, or inside a QML engine, which
// a program that waits in the tray does without; and that one asks once whether there is a tray, and never
// again. This one follows the panel: when it comes, is started anew and goes.
//
// Never blocks but for a name on the bus. GUI thread.
class StatusNotifierItem final : public TrayIcon {
    Q_OBJECT
public:
    // Without a bus nothing is drawn.
    explicit StatusNotifierItem(std::optional<QDBusConnection> bus, QObject *parent = nullptr);
    ~StatusNotifierItem() override;

    void show(const TrayFace &face) override;
    void hide() override;
    [[nodiscard]] bool isDrawn() const override { return m_isDrawn; }

private Q_SLOTS:
    void lookForPanel();

private:
    void expose();
    void enlist();
    void watcherGone();
    void setDrawn(bool isDrawn);

    std::optional<QDBusConnection> m_bus;
    QDBusServiceWatcher m_watcher;
    StatusNotifierFace m_face;
    TrayMenu m_menu;
    std::optional<TrayFace> m_shown; // none while it is hidden
    QString m_name;                  // on the bus; empty while it is hidden
    int m_round = 0;           // grows with each watcher, so that a late answer of a former one tells nothing
    bool m_isEnlisted = false; // the watcher knows of it
    bool m_isDrawn = false;
};

} // namespace morvane
