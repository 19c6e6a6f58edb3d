#include "security/KeyringDaemon.h"

#include "support/Await.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QLibrary>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString secretsName = u"org.freedesktop.secrets"_s;

// The prompts' test double that comes with the library the daemon prompts through. Resolved by name: its
// headers would bring a widget toolkit along.
template <typename Signature>
Signature *prompter(const char *function)
{
    static QLibrary library(u"gcr-base-3"_s, 1);
    const auto resolved = library.resolve(function);
    if (!resolved)
        throw std::runtime_error(library.errorString().toStdString());
    return reinterpret_cast<Signature *>(resolved);
}

bool isOnBus()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(secretsName);
}

} // namespace

KeyringDaemon::KeyringDaemon()
    : m_watcher(secretsName, QDBusConnection::sessionBus())
    , m_prompter(prompter<const char *()>("gcr_mock_prompter_start")())
{}

KeyringDaemon::~KeyringDaemon()
{
    stop();
    prompter<void()>("gcr_mock_prompter_stop")();
}

void KeyringDaemon::start(Start how)
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

void KeyringDaemon::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill(); // it writes each change at once and heeds nothing gentler
    TestWait::until([this] { return m_process.state() == QProcess::NotRunning && !isOnBus(); });
}

void KeyringDaemon::lock()
{
    auto call = QDBusMessage::createMethodCall(secretsName, u"/org/freedesktop/secrets"_s,
                                               u"org.freedesktop.Secret.Service"_s, u"Lock"_s);
    const QList<QDBusObjectPath> collections{QDBusObjectPath(u"/org/freedesktop/secrets/collection/login"_s)};
    call << QVariant::fromValue(collections);
    const auto reply = QDBusConnection::sessionBus().call(call);
    if (reply.type() == QDBusMessage::ErrorMessage)
        throw std::runtime_error(reply.errorMessage().toStdString());
}

void KeyringDaemon::expectPassword()
{
    prompter<void(const char *, ...)>("gcr_mock_prompter_expect_password_ok")(password, nullptr);
}

void KeyringDaemon::expectDismissal()
{
    prompter<void()>("gcr_mock_prompter_expect_password_cancel")();
}

void KeyringDaemon::setDelay(unsigned milliseconds)
{
    prompter<void(unsigned)>("gcr_mock_prompter_set_delay_msec")(milliseconds);
}

} // namespace morvane
