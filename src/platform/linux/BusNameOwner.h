#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

namespace morvane {

// Who has a name on a message bus. It is known by the time that an answer to a call made after this object
// came from there, since the bus keeps its messages in order; later versions of the library don't tell who
// sent an answer. Never waits for the bus. GUI thread.
class BusNameOwner final : public QObject {
    Q_OBJECT
public:
    BusNameOwner(const QDBusConnection &bus, const QString &name, QObject *parent = nullptr);

    // Its unique name; empty where nobody has the name, or that isn't known yet.
    [[nodiscard]] const QString &current() const { return m_current; }

Q_SIGNALS:
    // Either is empty where nobody had it, or nobody has it now.
    void changed(const QString &former, const QString &now);

private:
    QDBusServiceWatcher m_watcher;
    QString m_current;
    bool m_hasChanged = false; // so that what the bus was asked at first is old
};

} // namespace morvane
