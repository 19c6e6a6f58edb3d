#pragma once

#include "platform/linux/TrayTypes.h"

#include <QDBusObjectPath>
#include <QObject>

#include <functional>

namespace morvane {

// What panels read of a tray icon (org.kde.StatusNotifierItem).
class StatusNotifierFace : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QList<morvane::TrayPicture> IconPixmap READ pictures)
    Q_PROPERTY(QString AttentionIconName READ iconName)
    Q_PROPERTY(QList<morvane::TrayPicture> AttentionIconPixmap READ pictures)
    Q_PROPERTY(morvane::TrayToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    using QObject::QObject;

    // No signal, as those of this object go over the bus.
    std::function<void()> onActivated;

    struct Look {
        QString status;
        QString iconName;
        QList<TrayPicture> pictures;
        TrayToolTip toolTip;
    } look;

    [[nodiscard]] QString status() const { return look.status; }
    [[nodiscard]] QString iconName() const { return look.iconName; }
    [[nodiscard]] QList<TrayPicture> pictures() const { return look.pictures; }
    [[nodiscard]] TrayToolTip toolTip() const { return look.toolTip; }

    [[nodiscard]] static QString category() { return QStringLiteral("Communications"); }
    [[nodiscard]] static QString id();
    [[nodiscard]] static QString title();
    [[nodiscard]] static int windowId() { return 0; }
    [[nodiscard]] static bool itemIsMenu() { return false; }
    [[nodiscard]] static QDBusObjectPath menu()
    {
        return QDBusObjectPath(QStringLiteral("/StatusNotifierItem/Menu"));
    }

public Q_SLOTS:
    // These are the methods of the interface, all for the place of a click but the last.
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y) const; // only of panels that don't draw our menu
    void Scroll(int delta, const QString &orientation) const;

Q_SIGNALS:
    void NewIcon();
    void NewAttentionIcon();
    void NewToolTip();
    void NewStatus(const QString &status);
};

} // namespace morvane
