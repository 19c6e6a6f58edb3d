#pragma once

#include "support/Await.h"
#include "support/RuntimeHost.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QJsonArray>
#include <QProcess>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <sys/prctl.h>

namespace morvane {

using namespace Qt::StringLiterals;

// The press of local AI in a process of its own, on a profile and a home of its own, against the real release
// host and the runtime that it gives out.
class LocalPressFixture : public testing::Test {
protected:
    LocalPressFixture()
    {
        program.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        useHost(u"good"_s);
    }
    ~LocalPressFixture() override
    {
        kill();
        EXPECT_NO_THROW(awaitAllEnded()) << "an orphan is left";
    }

    // Another host, for another archive. What was installed stays.
    void useHost(const QString &archive)
    {
        host.emplace(archive);
        PrivateFile::write(profile.filePath(u"runtime.json"_s), host->developmentFile());
    }

    void start(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        run(QStringLiteral(MORVANE_LOCAL_PRESS), {}, environment);
    }
    // The profile is a disk of its own of so many bytes; false where this system lets nobody have one.
    [[nodiscard]] bool startOnDisk(int size)
    {
        const QString script =
            u"mkdir -p \"$1\" && mount -t tmpfs -o size=%1 none \"$1\" && echo mounted && exec \"$0\" \"$@\""_s
                .arg(size);
        run(u"unshare"_s, {u"--user"_s, u"--map-root-user"_s, u"--mount"_s, u"sh"_s, u"-c"_s, script,
                           QStringLiteral(MORVANE_LOCAL_PRESS)});
        return !comes("mounted").isEmpty();
    }
    void tell(const QByteArray &words)
    {
        program.write(words + '\n');
        program.waitForBytesWritten();
    }

    // Waits for a line that begins with one of these, and gives it; empty when the program has ended before.
    QByteArray comes(const QByteArrayList &beginnings)
    {
        QByteArray line;
        const auto isIt = [&] {
            return std::ranges::any_of(beginnings, [&](const auto &each) { return line.startsWith(each); });
        };
        TestWait::until([&] {
            while (program.canReadLine() && !isIt())
                line = program.readLine().trimmed();
            return isIt() || program.state() == QProcess::NotRunning;
        });
        return isIt() ? line : QByteArray();
    }
    QByteArray comes(const QByteArray &beginning) { return comes(QByteArrayList{beginning}); }
    // Presses, and gives the line that it ends with: "ready MODEL" or "failed WORDS".
    QByteArray press()
    {
        tell("press");
        return comes({"ready", "failed"});
    }

    void kill()
    {
        program.kill();
        program.waitForFinished();
        program.readAll();
    }
    // Ends the program as a person does.
    void end()
    {
        program.closeWriteChannel();
        program.waitForFinished();
        program.readAll();
    }

    // Waits until the runtime noted such an event.
    void awaitJournal(const QString &event)
    {
        lookUntil([&] { return !host->journal(event).empty(); });
    }
    // Waits until no process is left whose program lies in the profile.
    void awaitAllEnded() const
    {
        lookUntil([this] { return RuntimeHost::processesBelow(profile.path()).empty(); });
    }
    // Waits until some of the archive has been written, and gives how much.
    [[nodiscard]] qint64 awaitPart() const
    {
        QFileInfoList parts;
        lookUntil([&] {
            parts = QDir(managed(u"downloads"_s)).entryInfoList(QDir::Files);
            return !parts.isEmpty() && parts.first().size() > 0;
        });
        return parts.first().size();
    }
    // No runtime ever ran but a whole one, and none that wasn't confined as it should be.
    void expectConfinedRuns() const
    {
        const auto runs = host->journal(u"serve"_s);
        EXPECT_FALSE(runs.empty());
        for (const QJsonObject &run : runs) {
            EXPECT_TRUE(run["isWhole"_L1].toBool()) << "what was not installed as a whole ran";
            EXPECT_EQ(run["descriptors"_L1].toArray().size(), 0);
            EXPECT_EQ(run["group"_L1], run["process"_L1]);
            EXPECT_EQ(run["deathSignal"_L1].toInt(), SIGKILL);
            EXPECT_LE(run["environment"_L1].toArray().size(), 6);
        }
    }
    // Requests to the storage.
    [[nodiscard]] std::ptrdiff_t downloads()
    {
        return std::ranges::count_if(host->requests(), [](const auto &request) {
            return request.target.startsWith("/release-assets/");
        });
    }
    // Below the folder of what is managed.
    [[nodiscard]] QString managed(const QString &name) const
    {
        return profile.filePath(u"profile/data/"_s + Product::storeFolder + u'/' + name);
    }

    QTemporaryDir profile;
    std::optional<RuntimeHost> host;
    QProcess program;

private:
    void run(const QString &command, QStringList arguments,
             QProcessEnvironment environment = QProcessEnvironment::systemEnvironment())
    {
        arguments += {profile.filePath(u"profile"_s), profile.filePath(u"runtime.json"_s)};
        environment.insert(u"HOME"_s, profile.filePath(u"profile/home"_s));
        program.setProcessEnvironment(environment);
        program.start(command, arguments);
    }
    // Of files and processes, which tell nobody when they change.
    static void lookUntil(const std::function<bool()> &condition)
    {
        QTimer look;
        look.start(5);
        TestWait::until(condition);
    }
};

} // namespace morvane
