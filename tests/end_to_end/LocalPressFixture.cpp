#include "end_to_end/LocalPressFixture.h"

#include "support/Await.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTimer>

#include <csignal>
#include <sys/prctl.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Of files and processes, which tell nobody when they change.
void lookUntil(const std::function<bool()> &condition)
{
    QTimer look;
    look.start(5);
    TestWait::until(condition);
}

} // namespace

LocalPressFixture::LocalPressFixture()
{
    program.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    useHost(u"good"_s);
}

LocalPressFixture::~LocalPressFixture()
{
    kill();
    EXPECT_NO_THROW(awaitAllEnded()) << "an orphan is left";
}

void LocalPressFixture::useHost(const QString &archive)
{
    host.emplace(archive);
    QFile file(profile.filePath(u"runtime.json"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(host->developmentFile());
}

QStringList LocalPressFixture::words() const
{
    return {profile.filePath(u"profile"_s), profile.filePath(u"runtime.json"_s)};
}

void LocalPressFixture::run(const QString &command, const QStringList &arguments,
                            QProcessEnvironment environment)
{
    environment.insert(u"HOME"_s, profile.filePath(u"profile/home"_s));
    program.setProcessEnvironment(environment);
    program.start(command, arguments);
}

void LocalPressFixture::start(const QProcessEnvironment &environment)
{
    run(QStringLiteral(MORVANE_LOCAL_PRESS), words(), environment);
}

bool LocalPressFixture::startOnDisk(int size)
{
    const QString script =
        u"mkdir -p \"$1\" && mount -t tmpfs -o size=%1 none \"$1\" && echo mounted && exec \"$0\" \"$@\""_s
            .arg(size);
    run(u"unshare"_s,
        QStringList{u"--user"_s, u"--map-root-user"_s, u"--mount"_s, u"sh"_s, u"-c"_s, script,
                    QStringLiteral(MORVANE_LOCAL_PRESS)} +
            words(),
        QProcessEnvironment::systemEnvironment());
    return !comes("mounted").isEmpty();
}

void LocalPressFixture::tell(const QByteArray &words)
{
    program.write(words + '\n');
    program.waitForBytesWritten();
}

QByteArray LocalPressFixture::comes(const QByteArray &beginning)
{
    QByteArray line;
    TestWait::until([&] {
        while (program.canReadLine() && !line.startsWith(beginning))
            line = program.readLine().trimmed();
        return line.startsWith(beginning) || program.state() == QProcess::NotRunning;
    });
    return line.startsWith(beginning) ? line : QByteArray();
}

QByteArray LocalPressFixture::press()
{
    tell("press");
    QByteArray line;
    TestWait::until([&] {
        while (program.canReadLine() && !line.startsWith("ready") && !line.startsWith("failed"))
            line = program.readLine().trimmed();
        return line.startsWith("ready") || line.startsWith("failed") ||
               program.state() == QProcess::NotRunning;
    });
    return line;
}

void LocalPressFixture::kill()
{
    program.kill();
    program.waitForFinished();
    program.readAll();
}

void LocalPressFixture::end()
{
    program.closeWriteChannel();
    program.waitForFinished();
    program.readAll();
}

void LocalPressFixture::awaitJournal(const QString &event, std::size_t count)
{
    lookUntil([&] { return host->journal(event).size() >= count; });
}

void LocalPressFixture::awaitAllEnded() const
{
    lookUntil([this] { return RuntimeHost::processesBelow(profile.path()).empty(); });
}

qint64 LocalPressFixture::awaitPart() const
{
    QFileInfoList parts;
    lookUntil([&] {
        parts = QDir(managed(u"downloads"_s)).entryInfoList(QDir::Files);
        return !parts.isEmpty() && parts.first().size() > 0;
    });
    return parts.first().size();
}

void LocalPressFixture::expectConfinedRuns() const
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

std::size_t LocalPressFixture::downloads()
{
    std::size_t count = 0;
    for (const auto &request : host->requests())
        count += request.target.startsWith("/release-assets/") ? 1 : 0;
    return count;
}

QString LocalPressFixture::managed(const QString &name) const
{
    return profile.filePath(u"profile/data/"_s + Product::storeFolder + u'/' + name);
}

} // namespace morvane
