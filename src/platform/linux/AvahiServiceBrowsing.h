#pragma once

#include "ai/nearby/ServiceBrowsing.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>

#include <chrono>
#include <functional>
#include <optional>

namespace morvane {

class AvahiServiceBrowse;
class Clock;

// Announced services by way of the Avahi daemon (org.freedesktop.Avahi.Server, version 0.8). Never blocks but
// for the first connection to the bus, which is made when something is looked for. A daemon that comes back
// is asked again, and what it found before stays until it has. GUI thread.
class AvahiServiceBrowsing : public QObject, public ServiceBrowsing {
    Q_OBJECT
public:
    using Bus = std::function<QDBusConnection()>;

    // How long a look waits for a daemon that went away in its midst.
    static constexpr std::chrono::seconds patience{2};

    explicit AvahiServiceBrowsing(Clock &clock, Bus bus = QDBusConnection::systemBus,
                                  QObject *parent = nullptr);
    ~AvahiServiceBrowsing() override;

    [[nodiscard]] std::unique_ptr<ServiceBrowse> browse(QString type, Handlers handlers) override;

private Q_SLOTS:
    void itemNew(const QDBusMessage &signal) { deliver(signal); }
    void itemRemove(const QDBusMessage &signal) { deliver(signal); }
    void allForNow(const QDBusMessage &signal) { deliver(signal); }
    void failure(const QDBusMessage &signal) { deliver(signal); }
    void ownerChanged(const QString &name, const QString &former, const QString &now);

private:
    friend class AvahiServiceBrowse;
    using Replied = std::function<void(const QDBusMessage &reply)>;

    [[nodiscard]] bool connectToBus();
    void ask(AvahiServiceBrowse &browse);
    void call(const QString &method, const QVariantList &arguments, std::chrono::milliseconds limit,
              Replied replied);
    void adopt(const QString &path, AvahiServiceBrowse &browse);
    void release(const QString &path);
    void deliver(const QDBusMessage &signal);

    Clock &m_clock;
    Bus m_makeBus;
    std::optional<QDBusConnection> m_bus;
    std::optional<QDBusServiceWatcher> m_owner;
    std::vector<AvahiServiceBrowse *> m_browses;
    QHash<QString, AvahiServiceBrowse *> m_byPath; // of the daemon's objects
    // What objects said whose making hasn't been answered yet.
    std::vector<QDBusMessage> m_early;
    int m_inTheMaking = 0;
};

} // namespace morvane
