// Real grabs on an X server, with another of its programs beside.

#include "platform/linux/X11GlobalShortcuts.h"

#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/X11Windows.h"
#include "services/GlobalShortcutService.h"
#include "support/Await.h"
#include "support/TestScreen.h"

#include <QProcess>
#include <QTimer>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using State = GlobalShortcutBinding::State;

namespace {

class X11GlobalShortcutsTest : public testing::Test {
protected:
    void SetUp() override
    {
        const auto note = [this](GlobalShortcut shortcut, const QString &what) {
            m_told += (shortcut == GlobalShortcut::chat ? u"chat "_s : u"talk "_s) + what;
        };
        QObject::connect(&m_keys, &GlobalShortcutService::pressed, &m_keys,
                         [note](GlobalShortcut shortcut, const QString &token) {
                             const bool hasTime = token.startsWith("morvane_TIME"_L1);
                             note(shortcut, hasTime ? u"down"_s : u"down at no time"_s);
                         });
        QObject::connect(&m_keys, &GlobalShortcutService::released, &m_keys,
                         [note](GlobalShortcut shortcut) { note(shortcut, u"up"_s); });
        QObject::connect(&m_keys, &GlobalShortcutService::escaped, &m_keys,
                         [note](GlobalShortcut shortcut) { note(shortcut, u"Esc"_s); });
        QObject::connect(&m_keys, &GlobalShortcutService::couldNotRegister, &m_keys,
                         [this](const QString &keys) { m_told += u"no "_s + keys; });
    }

    void run(const QString &program, const QStringList &arguments) const
    {
        QProcess process;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DISPLAY"_s, m_screen.display());
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        TestWait::until([&] { return process.state() == QProcess::NotRunning; });
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }
    // As xdotool takes them.
    void play(const QString &keys) const { run(u"xdotool"_s, keys.split(u' ')); }
    QString heard()
    {
        TestWait::settle();
        return std::exchange(m_told, {}).join(u", "_s);
    }
    void awaitTold(qsizetype count)
    {
        TestWait::until([&] { return m_told.size() >= count; });
    }
    [[nodiscard]] State state(GlobalShortcut shortcut) const { return m_keys.binding(shortcut).state; }

    TestScreen m_screen{u"320x200"_s};
    InMemorySettingsRepository m_repository;
    SettingsStore m_settings{m_repository};
    X11GlobalShortcuts m_desktop{m_screen.display().toLatin1()};
    GlobalShortcutService m_keys{m_settings, &m_desktop};
    QStringList m_told;
};

TEST_F(X11GlobalShortcutsTest, BothKeysComeHoweverTheLocksStandAndAreHeldUntilOneOfThemIsUp)
{
    m_keys.registerShortcuts();
    ASSERT_EQ(state(GlobalShortcut::chat), State::bound);
    EXPECT_EQ(m_keys.binding(GlobalShortcut::talk).keys, u"Alt+V"_s);
    play(u"key alt+space"_s);
    awaitTold(2);
    play(u"keydown alt keydown v key Escape keyup alt keyup v"_s);
    awaitTold(5);
    play(u"key Num_Lock key Caps_Lock key alt+v key Caps_Lock key Num_Lock"_s);
    awaitTold(7);
    EXPECT_EQ(heard(), u"chat down, chat up, talk down, talk Esc, talk up, talk down, talk up"_s);

    // Nobody else's: with one more key, with one less, or once they were given back.
    play(u"key ctrl+alt+v key v"_s);
    m_keys.unregisterShortcuts();
    play(u"key alt+v"_s);
    m_keys.registerShortcuts();
    play(u"key alt+v"_s);
    awaitTold(2);
    EXPECT_EQ(heard(), u"talk down, talk up"_s);
}

TEST_F(X11GlobalShortcutsTest, AKeyThatRepeatsIsHeldOnce)
{
    m_keys.registerShortcuts();
    play(u"keydown alt keydown v"_s);
    awaitTold(1);
    for (int i = 0; i < 4; ++i) // as a server repeats it: up and down at once
        play(u"keyup --delay 0 v keydown --delay 0 v"_s);
    bool isLater = false; // it is real time
    QTimer::singleShot(2 * X11GlobalShortcuts::repeatPause, &m_desktop, [&isLater] { isLater = true; });
    TestWait::until([&isLater] { return isLater; });
    EXPECT_EQ(m_told.size(), 1) << "it is still down";
    play(u"keyup v keyup alt"_s);
    awaitTold(2);
    EXPECT_EQ(heard(), u"talk down, talk up"_s);
}

TEST_F(X11GlobalShortcutsTest, OneThatAnotherProgramHoldsIsSaidOnceAndTheOtherWorks)
{
    X11GlobalShortcuts other(m_screen.display().toLatin1());
    other.bind({{GlobalShortcut::chat, Qt::AltModifier | Qt::Key_Space, {}}});
    m_keys.registerShortcuts();
    EXPECT_EQ(state(GlobalShortcut::chat), State::taken);
    m_keys.registerShortcuts();
    play(u"key alt+space key alt+v"_s);
    awaitTold(3);
    EXPECT_EQ(heard(), u"no Alt+Space, talk down, talk up"_s);

    m_keys.choose(GlobalShortcut::chat, Qt::MetaModifier | Qt::Key_Adiaeresis); // a key that isn't there
    EXPECT_EQ(state(GlobalShortcut::chat), State::refused);
    m_keys.choose(GlobalShortcut::chat, Qt::MetaModifier | Qt::Key_F4);
    play(u"key super+F4"_s);
    awaitTold(2);
    EXPECT_EQ(heard(), u"chat down, chat up"_s);
}

TEST_F(X11GlobalShortcutsTest, TheKeysMoveWithTheKeyboardsMap)
{
    m_keys.registerShortcuts();
    play(u"key alt+v"_s);
    awaitTold(2);
    QObject context;
    bool isAnew = false;
    QObject::connect(&m_desktop, &GlobalShortcutBinding::changed, &context, [&] { isAnew = true; });
    run(u"setxkbmap"_s, {u"-layout"_s, u"us"_s, u"-variant"_s, u"dvorak"_s});
    TestWait::until([&] { return isAnew; });
    TestWait::settle();
    play(u"keydown alt key 55 key 60 key 65 keyup alt"_s);
    awaitTold(6); // where it was, where it is, and the other, which is where it was
    EXPECT_EQ(heard(), u"talk down, talk up, talk down, talk up, chat down, chat up"_s);
}

TEST(X11GlobalShortcutsWithoutServerTest, SaySo)
{
    X11GlobalShortcuts keys(":4711");
    keys.bind({{GlobalShortcut::talk, Qt::AltModifier | Qt::Key_V, {}}});
    EXPECT_EQ(keys.binding(GlobalShortcut::talk).state, State::unavailable);
    EXPECT_EQ(keys.binding(GlobalShortcut::chat).state, State::off);
}

} // namespace

} // namespace morvane
