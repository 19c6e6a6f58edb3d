#include "platform/linux/TrayTypes.h"

#include <QDBusMetaType>

namespace morvane {

QDBusArgument &operator<<(QDBusArgument &argument, const TrayPicture &picture)
{
    argument.beginStructure();
    argument << picture.width << picture.height << picture.pixels;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TrayPicture &picture)
{
    argument.beginStructure();
    argument >> picture.width >> picture.height >> picture.pixels;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const TrayToolTip &toolTip)
{
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.pictures << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TrayToolTip &toolTip)
{
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.pictures >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const TrayMenuItem &item)
{
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TrayMenuItem &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const TrayMenuLayout &layout)
{
    QVariantList children;
    for (const TrayMenuItem &child : layout.children)
        children += QVariant::fromValue(TrayMenuLayout{child, {}});
    argument.beginStructure();
    argument << layout.root.id << layout.root.properties << children;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TrayMenuLayout &layout)
{
    QVariantList children;
    argument.beginStructure();
    argument >> layout.root.id >> layout.root.properties >> children;
    argument.endStructure();
    layout.children.clear();
    for (const QVariant &child : children)
        layout.children += qdbus_cast<TrayMenuLayout>(child).root;
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const TrayMenuEvent &event)
{
    argument.beginStructure();
    argument << event.id << event.name << event.data << event.time;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TrayMenuEvent &event)
{
    argument.beginStructure();
    argument >> event.id >> event.name >> event.data >> event.time;
    argument.endStructure();
    return argument;
}

void registerTrayTypes()
{
    static const bool once = [] {
        qDBusRegisterMetaType<TrayPicture>();
        qDBusRegisterMetaType<QList<TrayPicture>>();
        qDBusRegisterMetaType<TrayToolTip>();
        qDBusRegisterMetaType<TrayMenuItem>();
        qDBusRegisterMetaType<QList<TrayMenuItem>>();
        qDBusRegisterMetaType<TrayMenuLayout>();
        qDBusRegisterMetaType<TrayMenuEvent>();
        qDBusRegisterMetaType<QList<TrayMenuEvent>>();
        qDBusRegisterMetaType<QList<int>>();
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace morvane
