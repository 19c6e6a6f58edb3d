#pragma once

#include "ai/nearby/ServiceBrowsing.h"

#include <QDBusMessage>
#include <QHash>
#include <QObject>
#include <QSet>

#include <map>
#include <memory>
#include <optional>
#include <tuple>

namespace morvane {

class Alarm;
class AvahiServiceBrowsing;

// One look: what the daemon's browser object told of a type so far. A service is told once for each network
// interface and protocol that it is seen on, and then asked for the computer that offers it.
class AvahiServiceBrowse : public QObject, public ServiceBrowse {
    Q_OBJECT
public:
    // More services of one type than this are left out.
    static constexpr int mostServices = 500;

    AvahiServiceBrowse(AvahiServiceBrowsing &house, QString type, ServiceBrowsing::Handlers handlers);
    ~AvahiServiceBrowse() override;

    [[nodiscard]] const QString &type() const { return m_type; }

    void begin();
    void wentAway(); // the daemon
    void cameBack();
    void began(const QDBusMessage &reply);
    void take(const QDBusMessage &signal);

private:
    // Interface and protocol by their numbers, and the service's name.
    using Sighting = std::tuple<int, int, QString>;

    void add(const Sighting &sighting);
    void resolve(const Sighting &sighting);
    void forgetStale();
    void publish();
    void fail(BrowseFailure failure);

    AvahiServiceBrowsing &m_house;
    QString m_type;
    ServiceBrowsing::Handlers m_handlers;
    QString m_path;                       // of the daemon's object; empty until it is made
    std::map<Sighting, bool> m_sightings; // true: told by the present daemon
    QHash<QString, QString> m_hosts;      // by service name; empty where none was told
    QSet<QString> m_resolving;
    std::unique_ptr<Alarm> m_waiting; // for a daemon that went away
};

} // namespace morvane
