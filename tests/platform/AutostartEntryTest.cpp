#include "platform/linux/AutostartEntry.h"

#include "platform/linux/PortalAutostart.h"
#include "services/LaunchAtLoginService.h"
#include "support/PlayedPortal.h"
#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class AutostartEntryTest : public testing::Test {
protected:
    // A program of this name.
    QString made(const QString &name)
    {
        PrivateFile::write(home.filePath(name), "#!/bin/sh\n");
        QFile::setPermissions(home.filePath(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return home.filePath(name);
    }
    QTemporaryDir home;
    const QString config = home.filePath(u"config"_s);
    const QString file = config + u"/autostart/ai.morvane.MorvaneGPT.desktop"_s;
};

TEST_F(AutostartEntryTest, IsReadBackWhateverTheProgramsPath)
{
    for (const auto *name : {"plain", "with space", "a\"b`c$d\\e", "ä"}) {
        AutostartEntry entry(config, made(QString::fromUtf8(name)));
        EXPECT_FALSE(entry.isOn()) << name;
        EXPECT_TRUE(entry.set(true));
        EXPECT_TRUE(entry.isOn()) << name << PrivateFile::read(file, 9999)->toStdString();
        EXPECT_TRUE(PrivateFile::read(file, 9999)->contains(" --background\n"));
        EXPECT_TRUE(entry.set(false));
        EXPECT_FALSE(entry.isOn());
        EXPECT_FALSE(QFile::exists(file));
    }
}

TEST_F(AutostartEntryTest, CountsAsOnOnlyWhenASessionWouldStartThisProgram)
{
    AutostartEntry entry(config, made(u"morvane"_s));
    ASSERT_TRUE(entry.set(true));
    const QByteArray good = *PrivateFile::read(file, 9999);
    const QByteArray another = "[Desktop Entry]\nType=Application\nName=x\nExec=";
    const std::pair<QByteArray, bool> files[] = {
        {good, true},
        {good + "Hidden=true\n", false},
        {good + "X-GNOME-Autostart-enabled=false\n", false},
        {good + "X-GNOME-Autostart-enabled=true\n", true},
        {good + "OnlyShowIn=Another;\n", false},
        {QByteArray(good).replace("morvane\" --", "gone\" --"), false},
        {another + made(u"other"_s).toUtf8() + '\n', false},
        {another + home.filePath(u"morvane"_s).toUtf8() + '\n', true},
        {"nonsense", false},
        {QByteArray(1 << 17, '#'), false},
        {{}, false}};
    for (const auto &[bytes, isOn] : files) {
        int told = 0;
        QObject context;
        QObject::connect(&entry, &AutostartEntry::changed, &context, [&] { ++told; });
        PrivateFile::write(file, bytes + "#\n"); // by somebody else
        TestWait::until([&] { return told > 0; });
        EXPECT_EQ(entry.isOn(), isOn) << bytes.left(999).toStdString();
        TestWait::settle();
    }
    QFile::remove(file);
    EXPECT_FALSE(entry.isOn());
}

TEST_F(AutostartEntryTest, ASandboxedProgramHasWhatThePortalAnswered)
{
    PrivateBus bus;
    std::optional<std::pair<uint, bool>> answer; // none: the portal doesn't know the method
    QVariantMap asked;
    const PlayedPortal portal(bus.connection(), [&](const QDBusMessage &call, const QDBusConnection &on) {
        if (!answer || call.member() != "RequestBackground"_L1)
            return false;
        asked = PlayedPortal::optionsOf(call);
        PlayedPortal::answer(call, on, answer->first, {{u"autostart"_s, answer->second}});
        return true;
    });
    const auto session = bus.connection();
    const struct {
        bool wished;
        std::optional<std::pair<uint, bool>> answer;
        bool isOn;
    } steps[] = {{true, {}, false},         {true, {{1, false}}, false}, {true, {{0, false}}, false},
                 {true, {{0, true}}, true}, {false, {{2, false}}, true}, {false, {{0, false}}, false}};
    for (const auto &[wished, answered, isOn] : steps) {
        answer = answered;
        PortalAutostart login(session, config);
        LaunchAtLoginService service(login);
        int told = 0;
        QObject::connect(&service, &LaunchAtLoginService::changed, [&] { ++told; });
        service.setEnabled(wished);
        EXPECT_EQ(service.isEnabled(), wished) << "while the portal asks";
        TestWait::until([&] { return told == 2; });
        EXPECT_EQ(service.isEnabled(), isOn);
        EXPECT_EQ(service.message().isEmpty(), wished == isOn);
        EXPECT_EQ(PortalAutostart(session, config).isOn(), isOn) << "after a restart";
    }
    EXPECT_EQ(asked[u"commandline"_s].toStringList(), (QStringList{u"morvane"_s, u"--background"_s}));
    EXPECT_FALSE(asked[u"autostart"_s].toBool());
}

} // namespace

} // namespace morvane
