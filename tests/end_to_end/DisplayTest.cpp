// The whole program on displays of its own: a compositor, an X server, and none at all.

#include "support/Await.h"
#include "support/TestScreen.h"

#include <QDir>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Variables = QMap<QString, QString>;

constexpr int noDisplay = 69;
const QByteArray ofMainWindow =
    "set_min_size(42"; // px; from Qt 6.8 on with the frame that it draws around it

class DisplayTest : public testing::Test {
protected:
    ~DisplayTest() override
    {
        for (QProcess *each : {&program, &compositor}) {
            each->kill();
            each->waitForFinished();
        }
    }

    // Of the environment only what names no display.
    void begin(QProcess &process, const QString &name, const QStringList &words, const Variables &variables)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const auto &display : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"XDG_SESSION_TYPE"_s,
                                    u"QT_QPA_PLATFORM"_s, u"DBUS_SESSION_BUS_ADDRESS"_s})
            environment.remove(display);
        environment.insert(u"XDG_RUNTIME_DIR"_s, folder.path());
        for (auto each = variables.begin(); each != variables.end(); ++each)
            environment.insert(each.key(), each.value());
        process.setProcessEnvironment(environment);
        process.start(name, words);
    }
    void start(QProcess &process, const Variables &variables)
    {
        QDir().mkpath(folder.filePath(u"profile"_s));
        begin(process, QStringLiteral(MORVANE_PROGRAM),
              {u"--profile"_s, folder.filePath(u"profile"_s), u"--practice-server"_s,
               u"http://127.0.0.1:1/v1"_s},
              variables);
    }
    void compose(const QStringList &words, const Variables &variables = {})
    {
        begin(compositor, u"weston"_s, QStringList{u"--socket=it"_s, u"--no-config"_s} + words, variables);
        TestWait::until([this] {
            return QFile::exists(folder.filePath(u"it"_s)) || compositor.state() == QProcess::NotRunning;
        });
        ASSERT_EQ(compositor.state(), QProcess::Running) << compositor.readAllStandardError().toStdString();
    }
    void waitForEnd()
    {
        TestWait::until([this] { return program.state() == QProcess::NotRunning; });
    }
    // It says those words; what it said is kept.
    [[nodiscard]] bool says(const QByteArray &words)
    {
        TestWait::until([&] {
            said += program.readAllStandardError();
            return said.contains(words) || program.state() == QProcess::NotRunning;
        });
        return said.contains(words);
    }

    QTemporaryDir folder;
    QProcess compositor;
    QProcess program;
    QByteArray said;
};

TEST_F(DisplayTest, NoneIsSaidInOneLineAndEndsTheProgram)
{
    struct Case {
        Variables variables;
        QString words;
    };
    const QList<Case> cases{
        {{}, u"WAYLAND_DISPLAY is not set, DISPLAY is not set"_s},
        {{{u"WAYLAND_DISPLAY"_s, u"it"_s}, {u"XDG_RUNTIME_DIR"_s, QString()}}, u"“it”"_s},
        {{{u"DISPLAY"_s, u":65000"_s}}, u"DISPLAY is “:65000”"_s},
        {{{u"WAYLAND_DISPLAY"_s, u"no\nbody"_s}}, u"“no body”"_s},
        {{{u"QT_QPA_PLATFORM"_s, u"cinema"_s}}, u"“cinema”"_s},
        {{{u"WAYLAND_DISPLAY"_s, u"it"_s}, {u"QT_QPA_PLATFORM_PLUGIN_PATH"_s, u"/nowhere"_s}}, u"“it”"_s},
    };
    for (const Case &each : cases) {
        start(program, each.variables);
        waitForEnd();
        said = program.readAllStandardError();
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), noDisplay);
        EXPECT_EQ(said.count('\n'), 1) << said.toStdString();
        EXPECT_TRUE(QString::fromUtf8(said).contains(each.words)) << said.toStdString();
    }
}

// It would wait for long; the alarm that ends that is rung ahead of its time.
TEST_F(DisplayTest, OneThatTakesTheConnectionAndSaysNothingIsNone)
{
    QLocalServer silent;
    ASSERT_TRUE(silent.listen(folder.filePath(u"silent"_s)));
    start(program, {{u"WAYLAND_DISPLAY"_s, u"silent"_s}});
    TestWait::until([&] { return silent.hasPendingConnections(); });
    ::kill(static_cast<pid_t>(program.processId()), SIGALRM);
    waitForEnd();
    EXPECT_EQ(program.exitCode(), noDisplay);
    EXPECT_TRUE(program.readAllStandardError().contains("within 20 seconds"));
}

// With a shell that frames windows and one that fills the screen with them, on a fine display and a usual
// one, and where no OpenGL is.
TEST_F(DisplayTest, ACompositorShowsTheWindowUnderItsId)
{
    const QString noGraphics = u"__EGL_VENDOR_LIBRARY_DIRS"_s;
    for (const auto &[shell, scale, variables] :
         {std::tuple(u"desktop"_s, 1, Variables{}), std::tuple(u"kiosk"_s, 2, Variables{}),
          std::tuple(u"desktop"_s, 2,
                     Variables{{u"QT_QUICK_BACKEND"_s, QString()}, {noGraphics, u"/nowhere"_s}})}) {
        SCOPED_TRACE(shell.toStdString());
        compose({u"--backend=headless-backend.so"_s, u"--use-pixman"_s, u"--shell=%1-shell.so"_s.arg(shell),
                 u"--scale=%1"_s.arg(scale)});
        Variables all = variables;
        all.insert(u"WAYLAND_DISPLAY"_s, u"it"_s);
        all.insert(u"WAYLAND_DEBUG"_s, u"1"_s);
        start(program, all);
        EXPECT_TRUE(says(ofMainWindow)) << "the main window's";
        EXPECT_TRUE(says("set_app_id(\"ai.morvane.MorvaneGPT\")"));
        EXPECT_TRUE(says("set_buffer_scale(" + QByteArray::number(scale) + ")"));
        said = said.sliced(said.indexOf(ofMainWindow));
        EXPECT_TRUE(says(".attach(")) << "something is drawn";
        said.clear();
        QProcess second; // here no window may come to the front by itself
        start(second, all);
        EXPECT_TRUE(says(ofMainWindow)) << "shown anew";
        TestWait::until([&] { return second.state() == QProcess::NotRunning; });
        program.terminate();
        waitForEnd();
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 0);
        compositor.terminate();
        TestWait::until([this] { return compositor.state() == QProcess::NotRunning; });
        said.clear();
    }
}

} // namespace

} // namespace morvane
