#pragma once

#include "platform/linux/TrayTypes.h"
#include "view_models/TrayIcon.h"

#include <QDBusVariant>
#include <QObject>
#include <QStringList>

#include <functional>
#include <vector>

namespace morvane {

// A flat menu as panels draw it (com.canonical.dbusmenu, version 3). An entry keeps its number in all menus,
// so that a click on one that has gone meanwhile does nothing.
class TrayMenu : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    using QObject::QObject;

    // No signal, as those of this object go over the bus.
    std::function<void(TrayCommand command)> onChosen;

    void set(const std::vector<TrayFace::Entry> &entries);

    [[nodiscard]] static uint version() { return 3; }
    [[nodiscard]] static QString textDirection();
    [[nodiscard]] static QString status() { return QStringLiteral("normal"); }
    [[nodiscard]] static QStringList iconThemePath() { return {}; }

public Q_SLOTS:
    // These are the methods of the interface.
    uint GetLayout(int parent, int depth, const QStringList &names, morvane::TrayMenuLayout &layout) const;
    QList<morvane::TrayMenuItem> GetGroupProperties(const QList<int> &ids, const QStringList &names) const;
    QDBusVariant GetProperty(int id, const QString &name) const;
    void Event(int id, const QString &name, const QDBusVariant &data, uint time);
    QList<int> EventGroup(const QList<morvane::TrayMenuEvent> &events);
    bool AboutToShow(int id) const;
    QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &unknown) const;

Q_SIGNALS:
    void LayoutUpdated(uint revision, int parent);

private:
    [[nodiscard]] QList<TrayMenuItem> items() const;

    std::vector<TrayFace::Entry> m_entries;
    uint m_revision = 1;
};

} // namespace morvane
