#pragma once

#include "support/Await.h"
#include "support/TestData.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QUuid>

#include <functional>

namespace morvane {

// A bus of its own, on which a test plays other programs.
class PrivateBus {
public:
    // It starts by itself what its configuration says, in `environment`: nothing unless the test says
    // otherwise, for what this machine has installed would answer in the test's place.
    explicit PrivateBus(const QString &configuration = TestData::pathOf("bus.conf"),
                        const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        m_daemon.setProcessEnvironment(environment);
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--config-file=") + configuration, QStringLiteral("--nofork"),
                        QStringLiteral("--print-address")});
        TestWait::until(
            [this] { return m_daemon.canReadLine() || m_daemon.state() == QProcess::NotRunning; });
        m_address = m_daemon.readLine().trimmed();
    }
    ~PrivateBus()
    {
        for (const QString &name : m_names)
            QDBusConnection::disconnectFromBus(name);
        end();
    }
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    [[nodiscard]] const QByteArray &address() const { return m_address; }
    // A new one each time.
    [[nodiscard]] QDBusConnection connection()
    {
        m_names += QUuid::createUuid().toString();
        return QDBusConnection::connectToBus(QString::fromUtf8(m_address), m_names.last());
    }

    void end()
    {
        m_daemon.terminate(); // killed, it would leave its socket behind
        m_daemon.waitForFinished();
    }

private:
    QProcess m_daemon;
    QByteArray m_address;
    QStringList m_names;
};

// Another program: answers each call to its name as the test says.
class PlayedService : public QDBusVirtualObject {
public:
    // False: it has no such method.
    using Answer = std::function<bool(const QDBusMessage &, const QDBusConnection &)>;

    PlayedService(QDBusConnection bus, const QString &name, Answer answer)
        : m_bus(std::move(bus))
        , m_name(name)
        , m_answer(std::move(answer))
    {
        m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        m_bus.registerService(m_name);
    }
    ~PlayedService() override
    {
        m_bus.unregisterService(m_name);
        m_bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        return m_answer(message, bus);
    }
    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    // The same program under one more name.
    void own(const QString &name) { m_bus.registerService(name); }
    void tell(const QString &path, const QString &interface, const QString &signal,
              const QVariantList &arguments = {})
    {
        auto message = QDBusMessage::createSignal(path, interface, signal);
        message.setArguments(arguments);
        m_bus.send(message);
    }

private:
    QDBusConnection m_bus;
    const QString m_name;
    Answer m_answer;
};

} // namespace morvane
