#include "WindowFixture.h"

#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/companion/CompanionViewModel.h"

#include <QAccessible>

#include <set>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class GhostModeTest : public WindowFixture {
protected:
    [[nodiscard]] bool isDrawn(const QString &objectName) const
    {
        return WindowDriver::item(m_window, objectName) != nullptr;
    }
    // What a screen reader knows of the Ghost button.
    [[nodiscard]] QAccessibleInterface *button() const
    {
        return QAccessible::queryAccessibleInterface(item(u"ghostButton"_s));
    }
    [[nodiscard]] QString announced() const { return item(u"announcement"_s)->property("words").toString(); }
    void beginGhost() { press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier); }
    [[nodiscard]] GhostDesk &ghosts() const { return *m_app->presentation().chat->ghosts(); }
};

TEST_F(GhostModeTest, IsBegunAndLeftByKeysAloneAndIsSeenAndHeardToBeOn)
{
    EXPECT_FALSE(isDrawn(u"ghostFrame"_s) || isDrawn(u"ghostBadge"_s));
    EXPECT_FALSE(button()->state().checked);
    beginGhost();
    EXPECT_TRUE(button()->state().checked);
    EXPECT_TRUE(
        button()->text(QAccessible::Description).startsWith(u"Ghost mode is on. Click to turn it off."_s));
    EXPECT_EQ(announced(), u"Ghost mode is on. Nothing here is kept."_s);
    EXPECT_TRUE(isDrawn(u"ghostFrame"_s) && isDrawn(u"ghostBadge"_s));
    type(u"secret words"_s);
    press(Qt::Key_Return);
    stream(u"secret reply"_s);
    endReply();
    EXPECT_EQ(transcript().size(), 2);
    EXPECT_EQ(item(u"chatTitle"_s)->property("text"), u"Ghost chat"_s);
    EXPECT_EQ(m_window->title(), u"MorvaneGPT"_s);
    EXPECT_EQ(m_app->storage().repository->count(), 1) << "the empty chat that was there";

    const struct {
        QList<int> keys;
        bool isOn;
        std::int64_t saved;
    } rows[]{{{Qt::Key_Escape}, true, 1},
             {{Qt::Key_Return}, true, 1},                    // the harmless answer has the keyboard
             {{Qt::Key_Backtab, Qt::Key_Return}, false, 3}}; // kept, and the new one
    for (const auto &[keys, isOn, saved] : rows) {
        press(Qt::Key_N, Qt::ControlModifier);
        EXPECT_TRUE(eventually([&] { return shows(u"Drop this Ghost chat?"_s); }));
        settle();
        for (const int key : keys)
            press(key);
        EXPECT_TRUE(eventually([&] { return ghosts().questionId().isEmpty(); }));
        settle();
        EXPECT_EQ(ghosts().isOn(), isOn);
        EXPECT_EQ(m_app->storage().repository->count(), saved);
    }
    EXPECT_EQ(announced(), u"Ghost mode is off"_s);
    EXPECT_TRUE(isAt(m_window, u"Message"_s));
}

TEST_F(GhostModeTest, TheButtonExplainsItselfAndAsksBeforeItSaves)
{
    showReply(u"A reply"_s);
    EXPECT_FALSE(isDrawn(u"ghostCard"_s));
    click(item(u"ghostButton"_s));
    EXPECT_TRUE(eventually([&] { return shows(u"Start a new chat to use Ghost mode."_s); }));
    EXPECT_FALSE(ghosts().isOn());
    click(item(u"newGhostChat"_s));
    EXPECT_TRUE(ghosts().isOn());
    send(u"secret"_s);
    click(item(u"ghostButton"_s));
    EXPECT_TRUE(eventually([&] { return shows(u"Save this Ghost chat?"_s); }));
    settle();
    click(named(u"Save Chat"_s));
    EXPECT_TRUE(eventually([&] { return shows(u"Saved when the reply finishes"_s); }));
    stream(u"reply"_s);
    endReply();
    EXPECT_FALSE(isDrawn(u"ghostFrame"_s));
    EXPECT_EQ(item(u"chatTitle"_s)->property("text"), u"secret"_s);
    EXPECT_EQ(transcript(), (QStringList{u"secret"_s, u"reply"_s}));
}

class GhostTest : public WindowFixture {
protected:
    void SetUp() override
    {
        load();
        m_ghost = item(u"companion"_s);
        ASSERT_NE(m_ghost, nullptr);
    }
    [[nodiscard]] QByteArray picture()
    {
        const QRectF place = m_ghost->mapRectToScene(m_ghost->boundingRect());
        const QImage drawn = m_window->grabWindow().copy(place.toAlignedRect());
        return {reinterpret_cast<const char *>(drawn.constBits()), drawn.sizeInBytes()};
    }
    [[nodiscard]] bool moves() const { return m_ghost->property("moving").toBool(); }

    QQuickItem *m_ghost = nullptr;
};

TEST_F(GhostTest, EachStateLooksDifferentAndIsNamedForAScreenReader)
{
    std::set<QByteArray> pictures;
    std::set<QString> descriptions;
    for (int state = 0; state <= static_cast<int>(Companion::State::error); ++state) {
        m_app->presentation().companion->reset();
        m_app->presentation().companion->transition(static_cast<Companion::State>(state));
        settle();
        pictures.insert(picture());
        descriptions.insert(m_ghost->property("description").toString());
    }
    EXPECT_EQ(pictures.size(), 7U);
    EXPECT_EQ(descriptions.size(), 7U);
}

TEST_F(GhostTest, ItIsStillWhereMotionIsReducedAndWhereNobodySeesIt)
{
    EXPECT_FALSE(moves());
    m_app->storage().settings->setReduceAnimation(false);
    settle();
    EXPECT_TRUE(moves());
    press(Qt::Key_F9); // takes the sidebar away
    EXPECT_TRUE(eventually([this] { return !moves(); }));
    press(Qt::Key_F9);
    EXPECT_TRUE(eventually([this] { return moves(); }));
    m_window->hide();
    EXPECT_TRUE(eventually([this] { return !moves(); }));
}

} // namespace

} // namespace morvane
