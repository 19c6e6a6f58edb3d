#include "persistence/UserDefaultsSettingsRepository.h"
#include "support/ModelServer.h"
#include "support/PrivateBus.h"
#include "utils/files/PrivateFile.h"
#include "utils/files/SupportFolders.h"
#include "utils/text/Product.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The installed program of a person who has set it up, on a bus that knows its service file.
class DesktopStartTest : public testing::Test {
protected:
    DesktopStartTest()
    {
        const SupportFolders folders{.data = home.filePath(u"data"_s),
                                     .config = home.filePath(u"config"_s),
                                     .runtime = home.filePath(u"run"_s)};
        UserDefaultsSettingsRepository settings(
            UserDefaultsSettingsRepository::path(folders, Product::serviceName));
        settings.setBoolean(u"onboardingComplete"_s, true);
        settings.setBoolean(u"hostedChatEnabled"_s, false);
        settings.setString(u"aiBaseURL"_s, server.baseUrl());
        settings.setString(u"aiModel"_s, u"practice-fast"_s);
        settings.flush();
        environment.insert(u"HOME"_s, home.path());
        environment.insert(u"XDG_DATA_HOME"_s, folders.data);
        environment.insert(u"XDG_CONFIG_HOME"_s, folders.config);
        environment.insert(u"XDG_RUNTIME_DIR"_s, folders.runtime);
        PrivateFile::createFolder(folders.runtime);
        QByteArray service = *PrivateFile::read(QStringLiteral(MORVANE_BUS_SERVICE), 9999);
        const qsizetype at = service.indexOf("Exec=") + 5;
        service.replace(at, service.indexOf("/bin/morvane") + 12 - at, MORVANE_PROGRAM);
        PrivateFile::write(home.filePath(u"services/ai.morvane.MorvaneGPT.service"_s), service);
        const QString configuration =
            u"<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><servicedir>%1/services"
            "</servicedir><policy context=\"default\"><allow send_destination=\"*\"/><allow "
            "receive_sender=\"*\"/><allow own=\"*\"/>"
            "</policy></busconfig>"_s.arg(home.path());
        PrivateFile::write(home.filePath(u"bus.conf"_s), configuration.toUtf8());
        bus.emplace(home.filePath(u"bus.conf"_s), environment);
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, QString::fromUtf8(bus->address()));
        desktop.emplace(bus->connection());
    }
    ~DesktopStartTest() override { end(); }

    void act(const QString &action, const QVariantList &parameter = {})
    {
        auto call = QDBusMessage::createMethodCall(name, u"/ai/morvane/MorvaneGPT"_s,
                                                   u"org.freedesktop.Application"_s, u"ActivateAction"_s);
        call.setArguments({action, parameter, QVariantMap()});
        const QDBusPendingCallWatcher answer(desktop->asyncCall(call));
        TestWait::until([&] { return answer.isFinished(); });
        EXPECT_FALSE(answer.isError()) << answer.error().message().toStdString();
    }
    // A second start, which ends once it has handed on what it was started for.
    void type(const QStringList &arguments)
    {
        QProcess second;
        second.setProcessEnvironment(environment);
        second.start(QStringLiteral(MORVANE_PROGRAM), arguments);
        EXPECT_TRUE(second.waitForFinished()) << "there was nobody to hand it to";
        EXPECT_EQ(second.exitCode(), 0);
    }
    // As a session's end does.
    void end()
    {
        auto *const names = desktop->interface();
        const QDBusReply<uint> process = names->servicePid(name);
        if (!process.isValid())
            return;
        ::kill(static_cast<pid_t>(process.value()), SIGTERM);
        const QDBusServiceWatcher wakes(name, *desktop); // the event loop
        TestWait::until([&] { return !names->isServiceRegistered(name); });
    }
    [[nodiscard]] QByteArray asked(std::size_t question)
    {
        while (server.chats().size() < question)
            server.awaitRequests(server.requests().size() + 1);
        return server.chats().at(question - 1).body;
    }

    const QString name = Product::desktopId;
    QTemporaryDir home;
    ModelServer server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    std::optional<PrivateBus> bus;
    std::optional<QDBusConnection> desktop;
};

TEST_F(DesktopStartTest, TheBusStartsItAndOnlyTheCommandLineSpeaksForThePerson)
{
    act(u"new-chat"_s);
    type({u"--ask"_s, u"Which ferns?"_s});
    EXPECT_TRUE(asked(1).contains("Which ferns?"));
    type({u"--background"_s});
    type({u"--new-ghost-chat"_s, u"--ask=Which mosses?"_s});
    EXPECT_TRUE(asked(2).contains("Which mosses?"));
    act(u"ask"_s, {u"another program's words"_s});
    end();
    act(u"ask"_s, {u"another program's words"_s}); // to a program that has to be started for it
    end();
    for (const auto &request : server.chats())
        EXPECT_FALSE(request.body.contains("another program's words"));
    EXPECT_EQ(server.chats().size(), 2U);
}

TEST_F(DesktopStartTest, AQuestionStartsTheProgramWhereNoneRuns)
{
    QProcess first;
    first.setProcessEnvironment(environment);
    first.start(QStringLiteral(MORVANE_PROGRAM), {u"--ask"_s, u"Which ferns?"_s});
    EXPECT_TRUE(asked(1).contains("Which ferns?"));
    end();
    EXPECT_TRUE(first.waitForFinished());
}

} // namespace

} // namespace morvane
