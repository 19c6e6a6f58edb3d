// Real programs, good and bad ones, in a folder of shortcuts. Only the watchdog's time is ours.

#include "platform/linux/Shortcuts.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ProcessMemory.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class ShortcutsTest : public testing::Test {
protected:
    ~ShortcutsTest() override { work.end(); }

    void put(const QString &name, const QByteArray &script, mode_t mode = 0700)
    {
        const QString path = shortcuts.folder() + u'/' + name;
        PrivateFile::write(path, "#!/bin/sh\n" + script + '\n');
        EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
    }

    // What it printed, or what was said instead.
    static QString endOf(const std::shared_ptr<TestWait::Outcome<QString>> &run)
    {
        try {
            return TestWait::result<QString>(run);
        } catch (const DesktopActionError &error) {
            return error.userMessage();
        } catch (const CancelledError &) {
            return u"cancelled"_s;
        }
    }
    QString ran(const QString &name, const std::optional<QString> &input = {})
    {
        return endOf(TestWait::begin(shortcuts.run(name, input, stop.get_token())));
    }

    // What a run says that waits in vain, once `onWaiting` was called: it has left its process id in a file.
    QString endedBy(const QString &script, const std::function<void()> &onWaiting)
    {
        QFile::remove(mark());
        put(u"waits"_s, script.toUtf8());
        const auto run = TestWait::begin(shortcuts.run(u"waits"_s, {}, stop.get_token()));
        QTimer looking; // the script can't wake this loop
        looking.start(10);
        TestWait::until([this] { return processIn(mark()) > 0; });
        onWaiting();
        return endOf(run);
    }

    QString mark() const { return folder.filePath(u"mark"_s); }

    static pid_t processIn(const QString &path)
    {
        return PrivateFile::read(path, 99).value_or(QByteArray()).trimmed().toInt();
    }

    // A process that was killed may be seen for a moment yet.
    void expectGone(pid_t process)
    {
        QTimer looking;
        looking.start(10);
        TestWait::until([process] {
            QFile status(u"/proc/%1/stat"_s.arg(process));
            return !status.open(QIODevice::ReadOnly) || status.readAll().contains(") Z ");
        });
    }

    QStringList left() const
    {
        return QDir(scratch()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QString scratch() const { return folder.filePath(u"run"_s); }

    QTemporaryDir folder;
    ManualClock clock;
    Work work{clock};
    Shortcuts shortcuts{folder.filePath(u"Shortcuts"_s), scratch(), clock, work};
    std::stop_source stop;
};

TEST_F(ShortcutsTest, EndAsTheyEndAndLeaveNothing)
{
    qputenv("MORVANE_SECRET", "of ours");
    const QString failed = u"That shortcut stopped with an error."_s;
    const struct {
        const char *script;
        QString says;
    } cases[] = {
        {"echo done", u"done"_s},
        {"", QString()},
        {"printf 'gr\\303\\274n \\377'", u"grün \uFFFD"_s},
        {"echo half; exit 3", failed},
        {"kill -9 $$", failed},
        {"exec /no/such/program", failed},
        {"read answer; echo \"[$answer]\"", u"[]"_s},
        {"read answer </dev/tty; echo asked", u"asked"_s}, // which fails, and asks nobody
        {"ls -A; pwd | grep -c morvane-shortcut; mkdir -p a/b; touch a/b/c; chmod 0 a/b", u"1"_s},
        {"echo \"$MORVANE_SECRET$LD_PRELOAD$QT_QPA_PLATFORM|$HOME\"", u'|' + qEnvironmentVariable("HOME")},
        {"exec ls /proc/self/fd", u"0\n1\n2\n3"_s}, // the last is the folder's own
        {"echo \"$# $*\"", u"0"_s}};
    for (const auto &[script, says] : cases) {
        put(u"it"_s, script);
        EXPECT_EQ(ran(u"it"_s), says) << script;
        EXPECT_EQ(left(), QStringList()) << script;
    }
    put(u"it"_s, "[ \"$1\" = --input-path ] && [ \"$(stat -c %a \"$2\")\" = 600 ] && cat \"$2\"");
    EXPECT_EQ(ran(u"it"_s, u"Zwei\nZeilen – \"$(id)\""_s), u"Zwei\nZeilen – \"$(id)\""_s);
    EXPECT_EQ(left(), QStringList());
}

TEST_F(ShortcutsTest, OneThatHangsEndsWithAllOfItsGroup)
{
    const QString hung = u"The “waits” shortcut didn't finish, so I stopped waiting for it."_s;
    const auto timeOut = [this] { clock.advance(Shortcuts::runPatience); };
    const QString forks = u"sleep 600 & echo $! >%1; "_s.arg(mark());
    for (const QString &script :
         {u"echo $$ >%1; while :; do sleep 600; done"_s.arg(mark()), forks + u"wait"_s,
          u"trap '' TERM; "_s + forks + u"while :; do sleep 1; done"_s}) {
        EXPECT_EQ(endedBy(script, timeOut), hung) << script.toStdString();
        expectGone(processIn(mark()));
    }
    EXPECT_EQ(endedBy(forks + u"wait"_s, [this] { stop.request_stop(); }), u"cancelled"_s);
    expectGone(processIn(mark()));
    stop = std::stop_source();

    // The pipe is held by what is left behind; nobody waits for that.
    put(u"leaves"_s, (forks + u"echo gone"_s).toUtf8());
    EXPECT_EQ(ran(u"leaves"_s), u"gone"_s);
    expectGone(processIn(mark()));

    clock.advance(Shortcuts::runPatience - 1ms);
    put(u"it"_s, "echo in time");
    EXPECT_EQ(ran(u"it"_s), u"in time"_s);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    TestWait::until([this] { return left().isEmpty(); });
}

TEST_F(ShortcutsTest, OneThatPrintsAGigabyteFillsNothing)
{
    put(u"much"_s, "echo first; yes | head -c 1000000000");
    QString output;
    const qint64 peak = ProcessMemory::peakMebibytes([&] { output = ran(u"much"_s); });
    EXPECT_TRUE(output.startsWith(u"first\ny\ny"_s));
    EXPECT_NEAR(static_cast<double>(output.size()), 65536, 2) << "trimmed";
    EXPECT_TRUE(peak <= 8 || ProcessMemory::isInstrumented()) << peak;
}

TEST_F(ShortcutsTest, AreListedAndFoundByTheirWholeNames)
{
    EXPECT_THROW(TestWait::await(shortcuts.list({})), DesktopActionError);
    const QStringList odd{u"two words"_s, u"it's \"so\" $(id)"_s, u"Küche – 整理.sh"_s, u"-n"_s};
    for (const QString &name : odd)
        put(name, "#   Says  it.\necho " + QByteArray::number(odd.indexOf(name)));
    put(u"plain.txt"_s, "", 0600);
    put(u".hidden"_s, "");
    QDir(shortcuts.folder()).mkdir(u"folder"_s);
    ::mkfifo(QFile::encodeName(shortcuts.folder() + u"/pipe"_s).constData(), 0700);
    QFile::link(u"/bin/true"_s, shortcuts.folder() + u"/out"_s);
    QFile::link(u"/nowhere"_s, shortcuts.folder() + u"/nothing"_s);
    QFile::link(u"two words"_s, shortcuts.folder() + u"/in"_s);
    put(u"open"_s, "", 0777);

    const auto all = TestWait::await(shortcuts.list({}));
    ASSERT_TRUE(all);
    QStringList listed;
    for (const auto &each : *all)
        listed += each.name + (each.refusal ? u" refused"_s : u": "_s + each.comment);
    QStringList expected{u"in: Says it."_s, u"nothing refused"_s, u"open refused"_s, u"out refused"_s};
    for (const QString &name : odd)
        expected += name + u": Says it."_s;
    listed.sort();
    expected.sort();
    EXPECT_EQ(listed, expected);
    for (const QString &name : odd)
        EXPECT_EQ(ran(name), QString::number(odd.indexOf(name))) << name.toStdString();
    EXPECT_EQ(ran(u"out"_s), u"“out” leads out of the Shortcuts folder, so I don't run it."_s);
    EXPECT_EQ(ran(u"open"_s), u"Others on this computer could change “open”, so I don't run it."_s);
    for (const QString &name : {u"two"_s, u"Two words"_s, u"plain.txt"_s, u"../Shortcuts/in"_s, u".hidden"_s,
                                u""_s, u"folder"_s, u"pipe"_s, u"/bin/true"_s})
        EXPECT_TRUE(ran(name).startsWith(u"There's no shortcut called"_s)) << name.toStdString();

    ::chmod(QFile::encodeName(shortcuts.folder()).constData(), 0777);
    EXPECT_TRUE(ran(u"in"_s).startsWith(u"Others on this computer could change what is in the Shortcuts"_s));
    const auto refused = TestWait::await(shortcuts.list({}));
    for (const auto &each : *refused)
        EXPECT_TRUE(each.refusal) << each.name.toStdString();
}

} // namespace

} // namespace morvane
