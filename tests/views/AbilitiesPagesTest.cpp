#include "WindowFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

class AbilitiesPagesTest : public WindowFixture {
protected:
    void SetUp() override
    {
        m_abilities.append({{u"name"_s, u"Search the web"_s},
                            {u"description"_s, u"Looks things up."_s},
                            {u"reason"_s, u"Turn on Web access."_s},
                            {u"hint"_s, QString()}});
        m_memory.append({{u"factId"_s, u"F"_s}, {u"note"_s, u"Likes tea."_s}});
        load();
        m_settings = settingsWindow();
        ASSERT_NE(m_settings, nullptr);
    }
    void turnTo(const QString &page)
    {
        m_settings->setProperty("page", page);
        settle();
    }
    [[nodiscard]] QQuickItem *control(const QString &name) const
    {
        return WindowDriver::item(m_settings, name); // the one of the page that is shown
    }
    [[nodiscard]] bool shows(const QString &text) const
    {
        const auto all = allItems(m_settings);
        return std::any_of(all.begin(), all.end(), [&](QQuickItem *child) {
            return child->isVisible() && child->property("text").toString() == text;
        });
    }

    QQuickWindow *m_settings = nullptr;
};

TEST_F(AbilitiesPagesTest, SwitchesApplyAtOnceAndAnAbilityThatIsOffSaysWhy)
{
    turnTo(u"abilities"_s);
    EXPECT_TRUE(shows(u"Turn on Web access."_s));
    click(control(u"abilities.web.switch"_s));
    EXPECT_FALSE(m_abilities.web);
    click(control(u"abilities.desktop.switch"_s));
    EXPECT_TRUE(m_abilities.desktop);
    click(control(u"abilities.enabled.switch"_s));
    EXPECT_FALSE(m_abilities.enabled);
    settle();
    EXPECT_FALSE(control(u"abilities.web.switch"_s)->isEnabled());
}

TEST_F(AbilitiesPagesTest, TheSearchKeyGoesInIsTestedAndNeverShown)
{
    turnTo(u"abilities"_s);
    control(u"key"_s)->forceActiveFocus();
    type(m_settings, u"secret"_s);
    press(m_settings, Qt::Key_Return);
    EXPECT_EQ(m_searchKey.saved, QStringList(u"secret"_s));
    m_searchKey.hasKey = true;
    Q_EMIT m_searchKey.changed();
    settle();
    click(control(u"testSearchKey"_s));
    EXPECT_EQ(m_searchKey.tests, 1);
    m_searchKey.message = u"The search service rejected that key."_s;
    Q_EMIT m_searchKey.changed();
    settle();
    EXPECT_TRUE(shows(m_searchKey.message));
}

TEST_F(AbilitiesPagesTest, ANoteIsEditedInPlaceAndDeleted)
{
    turnTo(u"memory"_s);
    click(control(u"editNote"_s));
    press(m_settings, Qt::Key_A, Qt::ControlModifier);
    type(m_settings, u"Likes rooibos."_s);
    press(m_settings, Qt::Key_Return);
    click(control(u"editNote"_s));
    type(m_settings, u"x"_s);
    press(m_settings, Qt::Key_Escape);
    click(control(u"removeNote"_s));
    EXPECT_EQ(m_memory.calls, QStringList({u"F Likes rooibos."_s, u"remove F"_s}));
}

TEST_F(AbilitiesPagesTest, ClearingAsksFirstAndIsTheWayOutOfALostKey)
{
    m_memory.FakeRows::clear();
    m_memory.problem = u"Sealed with a lost key."_s;
    Q_EMIT m_memory.problemChanged();
    turnTo(u"memory"_s);
    EXPECT_EQ(accessibleName(control(u"memoryProblem"_s)), m_memory.problem);
    click(control(u"clearMemory"_s));
    EXPECT_TRUE(m_memory.calls.isEmpty());
    ASSERT_TRUE(eventually([this] { return accessibleName(m_settings->activeFocusItem()) == "Cancel"_L1; }));
    press(m_settings, Qt::Key_Tab);
    press(m_settings, Qt::Key_Return);
    EXPECT_EQ(m_memory.calls, QStringList(u"clear"_s));
}

TEST_F(AbilitiesPagesTest, ASavedNoteIsTakenBackAboveTheComposer)
{
    EXPECT_EQ(WindowDriver::item(m_window, u"undoNote"_s), nullptr);
    m_receipts.append({{u"receiptId"_s, u"R"_s}, {u"note"_s, u"Likes tea."_s}, {u"isChange"_s, false}});
    settle();
    click(item(u"undoNote"_s));
    click(item(u"dismissNote"_s));
    EXPECT_EQ(m_receipts.calls, QStringList({u"undo R"_s, u"dismiss R"_s}));
}

} // namespace morvane
