#pragma once

#include "support/Await.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QLibrary>
#include <QProcess>
#include <QTemporaryDir>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

// A real keyring daemon on the bus of the environment, with files of its own that live as long as this
// object, and a person at its prompts who does what the test says.
//
// One at a time; GUI thread.
class KeyringDaemon {
public:
    enum class Start { Unlocked, Locked };

    KeyringDaemon() = default;
    ~KeyringDaemon()
    {
        stop();
        prompter<void()>("gcr_mock_prompter_stop")();
    }
    KeyringDaemon(const KeyringDaemon &) = delete;
    KeyringDaemon &operator=(const KeyringDaemon &) = delete;

    // The first unlocked start makes the keyring. Throws std::runtime_error when nothing answers.
    void start(Start how)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, m_home.path());
        environment.insert(u"GNOME_KEYRING_TEST_PROMPTER"_s, QString::fromLatin1(m_prompter));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        QStringList arguments{u"--foreground"_s, u"--components=secrets"_s};
        if (how == Start::Unlocked)
            arguments.append(u"--unlock"_s);
        m_process.start(u"gnome-keyring-daemon"_s, arguments);
        m_process.write(how == Start::Unlocked ? password : "");
        m_process.closeWriteChannel();
        TestWait::until([this] { return isOnBus() || m_process.state() == QProcess::NotRunning; });
        if (!isOnBus())
            throw std::runtime_error(m_process.readAll().toStdString());
    }
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill(); // it writes each change at once and heeds nothing gentler
        TestWait::until([this] { return m_process.state() == QProcess::NotRunning && !isOnBus(); });
    }

    // As the desktop's own "lock keyring" does.
    void lock()
    {
        auto call = QDBusMessage::createMethodCall(name, u"/org/freedesktop/secrets"_s,
                                                   u"org.freedesktop.Secret.Service"_s, u"Lock"_s);
        call << QVariant::fromValue(QList{QDBusObjectPath(u"/org/freedesktop/secrets/collection/login"_s)});
        const auto reply = QDBusConnection::sessionBus().call(call);
        if (reply.type() == QDBusMessage::ErrorMessage)
            throw std::runtime_error(reply.errorMessage().toStdString());
    }

    // What the person does at the next prompt.
    void expectPassword()
    {
        prompter<void(const char *, ...)>("gcr_mock_prompter_expect_password_ok")(password, nullptr);
    }
    void expectDismissal() { prompter<void()>("gcr_mock_prompter_expect_password_cancel")(); }
    // They are not in a hurry.
    void setDelay(unsigned milliseconds)
    {
        prompter<void(unsigned)>("gcr_mock_prompter_set_delay_msec")(milliseconds);
    }

private:
    static constexpr const char *password = "correct horse";
    static inline const QString name = u"org.freedesktop.secrets"_s;

    // The prompts' test double that comes with the library the daemon prompts through. Resolved by name: its
    // headers would bring a widget toolkit along.
    template <typename Signature>
    static Signature *prompter(const char *function)
    {
        static QLibrary library(u"gcr-base-3"_s, 1);
        const auto resolved = library.resolve(function);
        if (!resolved)
            throw std::runtime_error(library.errorString().toStdString());
        return reinterpret_cast<Signature *>(resolved);
    }
    static bool isOnBus() { return QDBusConnection::sessionBus().interface()->isServiceRegistered(name); }

    QTemporaryDir m_home;
    // Wakes the event loop when the daemon comes or goes.
    QDBusServiceWatcher m_watcher{name, QDBusConnection::sessionBus()};
    QProcess m_process;
    // The bus name of the prompts' other end.
    QByteArray m_prompter{prompter<const char *()>("gcr_mock_prompter_start")()};
};

} // namespace morvane
