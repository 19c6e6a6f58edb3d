#include "WindowFixture.h"

#include "persistence/SettingsStore.h"
#include "view_models/companion/CompanionViewModel.h"

#include <set>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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

TEST_F(GhostTest, ItSpeaksInABubble)
{
    QQuickItem *bubble = item(u"speechBubble"_s);
    ASSERT_NE(bubble, nullptr);
    EXPECT_FALSE(bubble->isVisible());
    m_app->presentation().companion->say(u"Boo"_s, 5s);
    EXPECT_TRUE(eventually([&] { return bubble->isVisible(); }));
    EXPECT_EQ(accessibleName(bubble), u"Boo"_s);
}

} // namespace morvane
