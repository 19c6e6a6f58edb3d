#include "platform/linux/TrayMenu.h"

#include <QGuiApplication>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int root = 0;
constexpr int firstSeparator = 100; // above the numbers of the entries

int idOf(TrayCommand command)
{
    return static_cast<int>(command) + 1;
}

// An underscore would underline the letter behind it.
QVariantMap propertiesOf(const TrayFace::Entry &entry)
{
    return {{u"label"_s, QString(entry.label).replace(u'_', u"__"_s)}};
}

// None named: all of them.
QVariantMap only(const QStringList &names, QVariantMap properties)
{
    if (!names.isEmpty())
        properties.removeIf([&](const auto &each) { return !names.contains(each.key()); });
    return properties;
}

} // namespace

QString TrayMenu::textDirection()
{
    return QGuiApplication::isRightToLeft() ? u"rtl"_s : u"ltr"_s;
}

void TrayMenu::set(const std::vector<TrayFace::Entry> &entries)
{
    if (m_entries == entries)
        return;
    m_entries = entries;
    Q_EMIT LayoutUpdated(++m_revision, root);
}

QList<TrayMenuItem> TrayMenu::items() const
{
    QList<TrayMenuItem> items;
    for (const TrayFace::Entry &entry : m_entries) {
        const int id = idOf(entry.command);
        if (entry.beginsGroup)
            items += {firstSeparator + id, {{u"type"_s, u"separator"_s}}};
        items += {id, propertiesOf(entry)};
    }
    return items;
}

uint TrayMenu::GetLayout(int parent, int depth, const QStringList &names, TrayMenuLayout &layout) const
{
    layout.root = {parent, {}};
    if (parent == root) {
        layout.root.properties = only(names, {{u"children-display"_s, u"submenu"_s}});
        if (depth != 0)
            layout.children = GetGroupProperties({}, names);
    } else if (const auto item = GetGroupProperties({parent}, names); !item.isEmpty()) {
        layout.root = item.front();
    }
    return m_revision;
}

// Of no numbers: all of them.
QList<TrayMenuItem> TrayMenu::GetGroupProperties(const QList<int> &ids, const QStringList &names) const
{
    QList<TrayMenuItem> chosen;
    for (const TrayMenuItem &item : items()) {
        if (ids.isEmpty() || ids.contains(item.id))
            chosen += {item.id, only(names, item.properties)};
    }
    return chosen;
}

QDBusVariant TrayMenu::GetProperty(int id, const QString &name) const
{
    const auto item = GetGroupProperties({id}, {name});
    return QDBusVariant(item.isEmpty() ? QVariant(QString())
                                       : item.front().properties.value(name, QString()));
}

void TrayMenu::Event(int id, const QString &name, const QDBusVariant &, uint)
{
    if (name != "clicked"_L1 || !onChosen)
        return;
    const auto entries = m_entries; // a choice may change them
    for (const TrayFace::Entry &entry : entries) {
        if (idOf(entry.command) == id)
            return onChosen(entry.command);
    }
}

QList<int> TrayMenu::EventGroup(const QList<TrayMenuEvent> &events)
{
    for (const TrayMenuEvent &event : events)
        Event(event.id, event.name, event.data, event.time);
    return {};
}

bool TrayMenu::AboutToShow(int) const
{
    return false; // what stands there is up to date
}

QList<int> TrayMenu::AboutToShowGroup(const QList<int> &, QList<int> &unknown) const
{
    unknown.clear();
    return {};
}

} // namespace morvane
