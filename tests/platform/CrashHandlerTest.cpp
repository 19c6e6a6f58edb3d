#include "platform/linux/CrashHandler.h"

#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Way {
    const char *name;
    int signal; // 0: the program ends by itself
    QString cause;
    QString thread = u"main"_s;
    QString call = u"  0  "_s; // the first one

    friend void PrintTo(const Way &way, std::ostream *stream) { *stream << way.name; }
};

class CrashHandlerTest : public testing::TestWithParam<Way> {
protected:
    void SetUp() override
    {
        if (!CrashHandler::isPossible())
            GTEST_SKIP() << "the sanitizer tells of crashes";
    }

    // The signal that ended it; none when it ended by itself.
    int crash(const QString &way) const
    {
        QProcess program;
        program.start(QStringLiteral(MORVANE_CRASHING_PROGRAM), {folder, way});
        EXPECT_TRUE(program.waitForFinished());
        return program.exitStatus() == QProcess::CrashExit ? program.exitCode() : 0;
    }

    [[nodiscard]] QStringList reports() const { return QDir(folder).entryList(QDir::Files, QDir::Name); }

    const QTemporaryDir home;
    const QString folder = home.filePath(u"state/ours"_s);
};

} // namespace

TEST_P(CrashHandlerTest, EachCrashSaysWhereAndNothingOfWhatStoodInMemory)
{
    const Way &way = GetParam();
    EXPECT_EQ(crash(QString::fromLatin1(way.name)), way.signal);
    ASSERT_EQ(reports().size(), way.signal == 0 ? 0 : 1);
    if (way.signal == 0)
        return;
    const QFileInfo info(folder + u'/' + reports().constFirst());
    EXPECT_EQ(info.permissions() & ~QFile::Permissions(0x7000), QFile::ReadUser | QFile::WriteUser);
    const QString text = QString::fromUtf8(*PrivateFile::read(info.filePath(), 1 << 20));
    SCOPED_TRACE(text.toStdString());
    EXPECT_TRUE(text.contains(u"\nCause: "_s + way.cause + u'\n'));
    EXPECT_TRUE(text.contains(u"\nThread: "_s + way.thread + u'\n'));
    EXPECT_TRUE(text.contains(way.call));
    EXPECT_TRUE(text.contains(QRegularExpression(u"morvane\\+0x[0-9a-f]+ \\(build [0-9a-f]{16,}\\)"_s)));
    EXPECT_FALSE(text.contains(u"words of"_s) || text.contains(u"6b72616d"_s));
}

INSTANTIATE_TEST_SUITE_P(
    EveryWay, CrashHandlerTest,
    testing::Values(Way{"segv", SIGSEGV, u"SIGSEGV"_s}, Way{"abort", SIGABRT, u"SIGABRT"_s},
                    Way{"overflow", SIGSEGV, u"SIGSEGV"_s},
                    Way{"jump", SIGSEGV, u"SIGSEGV"_s, u"main"_s, u"  0  outside of every module\n"_s},
                    Way{"throw", SIGABRT,
                        u"SIGABRT, an exception that nobody caught, of the type St13runtime_error"_s},
                    Way{"fatal", SIGABRT, u"SIGABRT, a fatal message of Qt"_s},
                    Way{"thread", SIGSEGV, u"SIGSEGV"_s, u"another"_s},
                    Way{"fullthread", SIGSEGV, u"SIGSEGV"_s, u"another"_s}, Way{"child", 0, {}}),
    [](const auto &way) { return std::string(way.param.name); });

TEST_F(CrashHandlerTest, TwoAtOnceLeaveOneReportAndTheNewestFiveStay)
{
    for (int i = 0; i < 7; ++i) {
        EXPECT_NE(crash(u"threads"_s), 0);
        EXPECT_EQ(reports().size(), std::min(i + 1, 5));
    }
}

} // namespace morvane
