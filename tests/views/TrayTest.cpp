#include "WindowFixture.h"

#include "app/MainWindowController.h"
#include "app/Tray.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/AppLockViewModel.h"

#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class FakeTrayIcon final : public TrayIcon {
public:
    void show(const TrayFace &face) override { shown = face; }
    void hide() override { shown.reset(); }
    [[nodiscard]] bool isDrawn() const override { return drawn; }

    [[nodiscard]] QStringList labels() const
    {
        QStringList labels;
        for (const auto &entry : shown.value_or(TrayFace{}).menu)
            labels += entry.label;
        return labels;
    }
    void setDrawn(bool isDrawn)
    {
        drawn = isDrawn;
        Q_EMIT isDrawnChanged();
    }

    bool drawn = true;
    std::optional<TrayFace> shown;
};

class TrayTest : public WindowFixture {
protected:
    void SetUp() override
    {
        WindowFixture::SetUp();
        tray.emplace(m_app->presentation(), icon, m_clock);
    }
    void TearDown() override
    {
        tray.reset();
        WindowFixture::TearDown();
    }
    [[nodiscard]] TrayState state() const { return icon.shown->state; }

    FakeTrayIcon icon;
    std::optional<Tray> tray;
};

TEST_F(TrayTest, TheIconShowsWhatGoesOnAndNoWordOfIt)
{
    const QStringList usual{u"Show MorvaneGPT"_s, u"New Chat"_s, u"New Ghost Chat"_s, u"Quit"_s};
    EXPECT_EQ(state(), TrayState::idle);
    EXPECT_EQ(icon.labels(), usual);
    send(u"SECRET"_s);
    EXPECT_EQ(state(), TrayState::replying);
    askToSearch(u"SECRET"_s, false);
    EXPECT_EQ(state(), TrayState::asking);
    EXPECT_EQ(icon.labels(), usual);
    EXPECT_FALSE(icon.shown->words.contains(u"SECRET"_s));
    m_app->presentation().chat->decline();
    EXPECT_EQ(state(), TrayState::replying);
    endReply();
    EXPECT_EQ(state(), TrayState::idle);

    (void)m_app->storage().vault->key();
    m_app->storage().vault->moveKey(UserPresence::Required);
    m_app->storage().settings->setAppLockEnabled(true);
    settle();
    EXPECT_TRUE(icon.labels().contains(u"Lock"_s));
    Q_EMIT icon.chosen(TrayCommand::lock);
    EXPECT_EQ(state(), TrayState::locked);
    EXPECT_EQ(icon.labels(), (QStringList{u"Show MorvaneGPT"_s, u"Unlock…"_s, u"Quit"_s}));
    Q_EMIT icon.chosen(TrayCommand::unlock);
    EXPECT_TRUE(eventually([this] { return state() == TrayState::idle; }));
}

TEST_F(TrayTest, TheSettingHidesItAtOnce)
{
    m_app->presentation().settings.setShowMenuBarIcon(false);
    EXPECT_FALSE(icon.shown);
    m_app->presentation().chat->setDraft(u"a"_s);
    send(u"b"_s);
    EXPECT_FALSE(icon.shown);
    m_app->presentation().settings.setShowMenuBarIcon(true);
    EXPECT_EQ(state(), TrayState::replying);
    endReply();
}

TEST_F(TrayTest, AClosedWindowIsHiddenOnlyWhereSomethingLeadsBackToIt)
{
    MainWindowController controller(m_app->presentation());
    controller.setReachable([this] { return icon.isDrawn(); });
    QQuickWindow &window = *controller.window();
    const auto isMinimised = [&window] { return bool(window.windowStates() & Qt::WindowMinimized); };
    controller.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QQuickItem *const field = window.activeFocusItem();
    ASSERT_TRUE(field && field->property("cursorVisible").toBool());
    controller.comeMinimised();
    EXPECT_FALSE(isMinimised()) << "it is in view";
    window.close();
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(field->property("cursorVisible").toBool()) << "nothing blinks";
    controller.comeMinimised();
    EXPECT_TRUE(window.isVisible() && isMinimised());
    controller.show();
    EXPECT_FALSE(isMinimised());
    window.setGeometry(60, 50, 900, 600);
    window.close();
    window.setGeometry(0, 0, 1200, 790); // as a window manager places what it takes for a new one
    controller.show();
    EXPECT_EQ(window.geometry(), QRect(60, 50, 900, 600));
    EXPECT_EQ(window.activeFocusItem(), field) << "the person writes on";
    icon.drawn = false;
    window.close();
    EXPECT_TRUE(window.isVisible() && isMinimised());
    settle();
}

TEST_F(TrayTest, APanelThatIsStartedAnewIsWaitedForAndOneThatIsGoneIsTold)
{
    int lost = 0;
    QObject::connect(&*tray, &Tray::lost, [&] { ++lost; });
    const auto wait = std::chrono::seconds(Tray::patience);
    m_clock.advance(wait);
    EXPECT_EQ(lost, 0);
    icon.setDrawn(false);
    m_clock.advance(wait - 1s);
    icon.setDrawn(true);
    m_clock.advance(wait);
    EXPECT_EQ(lost, 0);
    icon.setDrawn(false);
    m_clock.advance(wait);
    EXPECT_EQ(lost, 1);
}

} // namespace

} // namespace morvane
