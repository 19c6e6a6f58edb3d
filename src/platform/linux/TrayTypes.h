#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariantMap>

namespace morvane {

// The structures of the bus that a tray icon and its menu are described in.

struct TrayPicture { // (iiay)
    int width = 0;
    int height = 0;
    QByteArray pixels; // ARGB, four bytes each, alpha first, rows without gaps
};

struct TrayToolTip { // (sa(iiay)ss)
    QString iconName;
    QList<TrayPicture> pictures;
    QString title;
    QString text;
};

struct TrayMenuItem { // (ia{sv}), or (ia{sv}av) with the children of the root
    int id = 0;
    QVariantMap properties;
};

struct TrayMenuLayout {
    TrayMenuItem root;
    QList<TrayMenuItem> children; // none of them has any
};

struct TrayMenuEvent { // (isvu)
    int id = 0;
    QString name;
    QDBusVariant data;
    uint time = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const TrayPicture &picture);
const QDBusArgument &operator>>(const QDBusArgument &argument, TrayPicture &picture);
QDBusArgument &operator<<(QDBusArgument &argument, const TrayToolTip &toolTip);
const QDBusArgument &operator>>(const QDBusArgument &argument, TrayToolTip &toolTip);
QDBusArgument &operator<<(QDBusArgument &argument, const TrayMenuItem &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, TrayMenuItem &item);
QDBusArgument &operator<<(QDBusArgument &argument, const TrayMenuLayout &layout);
const QDBusArgument &operator>>(const QDBusArgument &argument, TrayMenuLayout &layout);
QDBusArgument &operator<<(QDBusArgument &argument, const TrayMenuEvent &event);
const QDBusArgument &operator>>(const QDBusArgument &argument, TrayMenuEvent &event);

// Before the first of them goes over a bus.
void registerTrayTypes();

} // namespace morvane

Q_DECLARE_METATYPE(morvane::TrayPicture)
Q_DECLARE_METATYPE(morvane::TrayToolTip)
Q_DECLARE_METATYPE(morvane::TrayMenuItem)
Q_DECLARE_METATYPE(morvane::TrayMenuLayout)
Q_DECLARE_METATYPE(morvane::TrayMenuEvent)
