// Talking in the window: its key, its button, and what is shown meanwhile.

#include "WindowFixture.h"

#include "app/GlobalKeys.h"
#include "async/SharedResult.h"
#include "audio/AudioPlaying.h"
#include "persistence/SettingsStore.h"
#include "services/GlobalShortcutService.h"
#include "support/SpokenMicrophone.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/GlobalShortcutViewModel.h"
#include "view_models/settings/MicrophoneViewModel.h"
#include "views/TalkKey.h"

#include <QAccessible>
#include <QKeySequence>
#include <QTest>

#include <array>
#include <map>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using enum VoiceEntry::Phase;

// Takes the first piece of what it is to play, and the rest when it is stopped.
class Loudspeaker final : public AudioPlaying {
public:
    QCoro::Task<> play(std::shared_ptr<AudioQueue> sound, std::stop_token stop) override
    {
        if (!stop.stop_possible())
            co_return; // the pop
        std::array<std::int16_t, 800> samples{};
        played = sound->read(samples);
        left = sound;
        const SharedResult<bool> never;
        co_await never.wait(stop);
    }

    std::size_t played = 0;
    std::weak_ptr<AudioQueue> left;
};

// A desktop that gives each key but the one that another program holds.
class Keys final : public GlobalShortcutBinding {
public:
    void bind(const std::vector<Wish> &wishes) override
    {
        bindings.clear();
        for (const Wish &wish : wishes)
            bindings[wish.shortcut] = wish.keys == held
                                          ? Binding{State::taken}
                                          : Binding{State::bound, QKeySequence(wish.keys).toString()};
        Q_EMIT changed();
    }
    void release() override { bindings.clear(); }
    [[nodiscard]] Binding binding(GlobalShortcut shortcut) const override
    {
        const auto found = bindings.find(shortcut);
        return found == bindings.end() ? Binding{} : found->second;
    }

    QKeyCombination held{Qt::AltModifier, Qt::Key_Space};
    std::map<GlobalShortcut, Binding> bindings;
};

struct Ears { // outlive the application
    Keys keys;
    SpokenMicrophone microphone;
    Loudspeaker loudspeaker;
};

class VoiceTest : protected Ears, public WindowFixture {
protected:
    void SetUp() override
    {
        m_voice.output = &loudspeaker;
        m_voice.permission = &microphone;
        m_voice.makeEngine = [this] { return microphone.makeEngine(); };
        m_keys = &keys;
        start();
        load();
    }
    [[nodiscard]] static QString accessibleDescription(QQuickItem *item)
    {
        return QAccessible::queryAccessibleInterface(item)->text(QAccessible::Description);
    }
    [[nodiscard]] VoiceEntry &entry() const { return *m_app->presentation().chat->entries()->voice(); }
    [[nodiscard]] SettingsStore &settings() const { return *m_app->storage().settings; }
    [[nodiscard]] VoiceEntry::Phase phase() const
    {
        settle();
        return entry().phase();
    }
    void down(int key, Qt::KeyboardModifiers modifiers)
    {
        QTest::keyPress(m_window, Qt::Key(key), modifiers);
    }
    void up(int key, Qt::KeyboardModifiers modifiers)
    {
        QTest::keyRelease(m_window, Qt::Key(key), modifiers);
    }
    // The last words come soon, or never.
    VoiceEntry::Phase afterTheWait()
    {
        settle();
        m_clock.advance(1200ms);
        return phase();
    }
};

TEST_F(VoiceTest, TheKeyIsHeldWhateverHasTheFocus)
{
    press(Qt::Key_K, Qt::ControlModifier); // the search field
    type(u"x"_s);
    const struct {
        const char *preset;
        int key;
        Qt::KeyboardModifiers modifiers;
        int up; // what comes up first
    } cases[] = {{"optionV", Qt::Key_V, Qt::AltModifier, Qt::Key_V},
                 {"commandShiftSpace", Qt::Key_Space, Qt::ControlModifier | Qt::ShiftModifier, Qt::Key_Shift},
                 {"functionF13", Qt::Key_F13, {}, Qt::Key_F13},
                 {"optionC", Qt::Key_C, Qt::AltModifier, Qt::Key_Alt}};
    for (const auto &each : cases) {
        settings().setPushToTalkShortcutText(QString::fromLatin1(each.preset));
        settle();
        down(each.key, each.modifiers);
        EXPECT_EQ(phase(), Listening) << each.preset;
        EXPECT_TRUE(microphone.isOpen());
        up(each.key, each.modifiers); // a repetition that nobody says to be one
        down(each.key, each.modifiers);
        up(Qt::Key_B, {});
        if (each.key == Qt::Key_F13) // not each time: it is real time
            QTest::qWait(2 * TalkKey::repeatPause);
        EXPECT_EQ(phase(), Listening);
        up(each.up, each.modifiers);
        EXPECT_TRUE(eventually([this] { return !entry().isRecording(); }));
        EXPECT_EQ(afterTheWait(), Idle);
        EXPECT_FALSE(microphone.isOpen());
        up(each.key, each.modifiers);
        entry().cancel();
    }
    settings().setPushToTalkShortcut(ShortcutPreset::disabled);
    settle();
    down(Qt::Key_C, Qt::AltModifier);
    EXPECT_EQ(phase(), Idle);
    settings().setPushToTalkShortcut(ShortcutPreset::optionV);
    settle();
    down(Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(phase(), Listening);
    Q_EMIT m_app->presentation().chat->entries()->said(u"and words"_s);
    settle();
    EXPECT_EQ(item(u"composer"_s)->property("cursorPosition"), 0) << "the person writes elsewhere";
    QFocusEvent away(QEvent::FocusOut); // no release will come
    QCoreApplication::sendEvent(m_window, &away);
    EXPECT_FALSE(entry().isRecording());
}

TEST_F(VoiceTest, TheButtonIsHeldOrClickedAndEscDrops)
{
    QQuickItem *button = item(u"voice"_s);
    ASSERT_TRUE(button && button->isVisible());
    const QPoint place = button->mapToScene(button->boundingRect().center()).toPoint();
    EXPECT_EQ(accessibleName(button), u"Talk: hold, or click to start and stop"_s);
    click(button);
    EXPECT_EQ(phase(), Listening);
    EXPECT_EQ(accessibleName(button), u"Stop and use the words"_s);
    EXPECT_EQ(button->mapToScene(button->boundingRect().center()).toPoint(), place)
        << "it stays below the pointer";
    EXPECT_TRUE(shows(u"Listening…"_s));
    EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus()) << "the words come there";
    click(button);
    EXPECT_FALSE(entry().isRecording());
    EXPECT_EQ(afterTheWait(), Idle);
    EXPECT_FALSE(shows(u"Listening…"_s));
    type(u"So "_s);
    Q_EMIT m_app->presentation().chat->entries()->said(u"words"_s);
    settle();
    type(u"!"_s);
    EXPECT_EQ(m_app->presentation().chat->draft(), u"So words!"_s) << "the cursor stands behind them";

    QTest::mousePress(m_window, Qt::LeftButton, {}, place);
    m_clock.advance(1s);
    QTest::mouseRelease(m_window, Qt::LeftButton, {}, place + QPoint(300, -50)); // the hand has moved
    EXPECT_FALSE(entry().isRecording());
    EXPECT_EQ(afterTheWait(), Idle);

    button->forceActiveFocus(Qt::TabFocusReason);
    for (const int key : {Qt::Key_Return, Qt::Key_Space}) {
        press(key);
        EXPECT_EQ(phase(), Listening) << key;
        send(); // a turn that Esc would stop
        button->forceActiveFocus(Qt::TabFocusReason);
        m_clock.advance(270s);
        settle();
        EXPECT_TRUE(shows(u"30 s left"_s));
        press(Qt::Key_Escape);
        EXPECT_EQ(phase(), Idle);
        EXPECT_FALSE(isAbandoned());
        EXPECT_FALSE(microphone.isOpen());
        endReply();
    }
}

TEST_F(VoiceTest, ADeadMicrophonesBannerLeadsToItsSettings)
{
    for (int i = 0; i < 2; ++i) {
        entry().begin();
        EXPECT_EQ(phase(), Listening);
        entry().end();
        EXPECT_EQ(afterTheWait(), Idle);
    }
    click(item(u"openVoiceSettings"_s));
    EXPECT_TRUE(shows(settingsWindow(), u"Key to hold"_s));
    click(WindowDriver::item(settingsWindow(), u"voice.key.presets"_s));
    EXPECT_TRUE(eventually([this] { return shows(settingsWindow(), u"Ctrl+Space"_s); }));
}

TEST_F(VoiceTest, AKeyOfTheDesktopShowsTheWindowAndTalksUnlessItIsLocked)
{
    int shown = 0;
    QObject::connect(m_app.get(), &AppState::mainWindowRequested, m_app.get(), [&shown] { ++shown; });
    settings().setOnboardingComplete(true);
    m_app->presentation().globalKeys.service->registerShortcuts();
    Q_EMIT keys.pressed(GlobalShortcut::chat, {});
    Q_EMIT keys.released(GlobalShortcut::chat);
    EXPECT_EQ(phase(), Idle);
    Q_EMIT keys.pressed(GlobalShortcut::talk, {});
    EXPECT_EQ(phase(), Listening);
    Q_EMIT keys.released(GlobalShortcut::talk);
    EXPECT_FALSE(entry().isRecording());
    entry().cancel();
    Q_EMIT keys.pressed(GlobalShortcut::talk, {});
    Q_EMIT keys.escaped(GlobalShortcut::talk);
    EXPECT_EQ(phase(), Idle);
    entry().toggle(); // by the button: the key that comes up is not what holds it
    Q_EMIT keys.pressed(GlobalShortcut::talk, {});
    Q_EMIT keys.released(GlobalShortcut::talk);
    EXPECT_EQ(phase(), Listening);
    entry().cancel();
    EXPECT_EQ(shown, 4);
    m_app->appLock().lock();
    Q_EMIT keys.pressed(GlobalShortcut::talk, {});
    EXPECT_EQ(phase(), Idle);
    EXPECT_EQ(shown, 5) << "the curtain";
    m_app->willTerminate();
    EXPECT_TRUE(keys.bindings.empty());
}

TEST_F(VoiceTest, AKeyThatIsTakenIsSaidAndAnotherIsRecordedInTheSettings)
{
    m_app->presentation().globalKeys.service->registerShortcuts();
    settle();
    EXPECT_TRUE(shows(u"Alt+Space shortcut could not be registered. Another app may already use it."_s));
    click(item(u"openKeyboardSettings"_s));
    QQuickWindow *const page = settingsWindow();
    const auto says = [&](const QString &words) { return eventually([&] { return shows(page, words); }); };
    EXPECT_TRUE(says(u"Brings it to the front.\nAlt+Space is not bound: another app may already use it."_s));
    QQuickItem *const record = WindowDriver::item(page, u"keyboard.chat.record"_s);
    const auto name = [&] { return accessibleName(record); };
    EXPECT_EQ(name(), u"Show the window: None"_s);
    click(record);
    EXPECT_EQ(name(), u"Show the window: Press keys…"_s);
    EXPECT_TRUE(keys.bindings.empty()) << "those that are bound can be pressed";
    for (const auto &[key, modifiers, answer] :
         {std::tuple{Qt::Key_Shift, Qt::ShiftModifier, u"Press the keys. Esc leaves them"_s},
          std::tuple{Qt::Key_W, Qt::ShiftModifier, u"Hold Ctrl, Alt or the logo key"_s},
          std::tuple{Qt::Key_V, Qt::AltModifier, u"Alt+V is the key to talk."_s}}) {
        WindowDriver::press(page, key, modifiers);
        EXPECT_TRUE(eventually([&] { return accessibleDescription(record).startsWith(answer); })) << key;
    }
    WindowDriver::press(page, Qt::Key_W, Qt::ControlModifier); // which would close the window
    EXPECT_EQ(name(), u"Show the window: Ctrl+W"_s);
    EXPECT_EQ(settings().chatShortcutKeys(), u"Ctrl+W"_s);
    click(record);
    WindowDriver::press(page, Qt::Key_Escape);
    EXPECT_EQ(name(), u"Show the window: Ctrl+W"_s);
    EXPECT_TRUE(page->isVisible());
    click(record);
    WindowDriver::press(page, Qt::Key_Backspace);
    EXPECT_EQ(name(), u"Show the window: None"_s);
    EXPECT_EQ(settings().chatShortcutText(), u"disabled"_s);
    click(record);
    WindowDriver::press(page, Qt::Key_Tab); // goes on, and leaves it
    EXPECT_FALSE(m_app->presentation().globalKeys.chat->isRecording());
    EXPECT_EQ(keys.bindings.size(), 1U);
}

TEST_F(VoiceTest, TheTrialIsPlayedBackOnceAndKeptNowhere)
{
    m_app->presentation().shell->voiceSettingsRequested();
    const auto button = [this](const QString &name) {
        settle();
        return WindowDriver::item(settingsWindow(), name);
    };
    const auto tryIt = [&](std::chrono::milliseconds time) {
        click(button(u"microphone.try"_s));
        EXPECT_EQ(button(u"microphone.playBack"_s), nullptr);
        settle();
        microphone.hear(std::vector<std::int16_t>(1600, 9000));
        m_clock.advance(time);
    };
    tryIt(MicrophoneViewModel::longestTrial); // it ends by itself
    EXPECT_FALSE(microphone.isOpen());
    click(button(u"microphone.playBack"_s));
    EXPECT_EQ(loudspeaker.played, 800U);
    click(button(u"microphone.playBack"_s)); // stops it
    settle();
    EXPECT_TRUE(loudspeaker.left.expired());
    EXPECT_EQ(button(u"microphone.playBack"_s), nullptr) << "it is gone";
    tryIt(1s);
    EXPECT_TRUE(microphone.isOpen());
    settingsWindow()->close();
    settle();
    EXPECT_FALSE(microphone.isOpen());
    EXPECT_FALSE(m_app->presentation().microphone->canPlayBack());
}

} // namespace morvane
