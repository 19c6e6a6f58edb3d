#include "WindowFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

class SourceMenuTest : public WindowFixture {
protected:
    void SetUp() override
    {
        m_sources.offer(u"Private cloud"_s, u"Not available in this build."_s);
        m_sources.offer(u"Local Llama"_s, {}, true);
        m_sources.offer(u"printer.example"_s);
        load();
    }
};

TEST_F(SourceMenuTest, APlaceIsPickedByKeysAndOneThatCannotRunIsNot)
{
    item(u"sourceButton"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return item(u"sourceSettings"_s) != nullptr; }));
    press(Qt::Key_Return);
    EXPECT_TRUE(m_sources.chosen.isEmpty()) << "the first one can't run";
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(m_sources.chosen, QList<int>({2}));
    EXPECT_TRUE(eventually([this] { return item(u"sourceSettings"_s) == nullptr; }));
}

TEST_F(SourceMenuTest, WhoCanReadAMessageIsInPlainViewBeforeItIsSent)
{
    EXPECT_EQ(item(u"sourceLine"_s)->property("note").toString(), u"Stays on this computer"_s);
    m_sources.destination = u"Goes to example.org"_s;
    m_sources.warning = u"example.org can read what you send."_s;
    Q_EMIT m_sources.sourceChanged();
    settle();
    EXPECT_TRUE(accessibleName(item(u"sourceLine"_s)).contains(m_sources.warning));
}

TEST_F(SourceMenuTest, ItsLastEntryLeadsToTheSettings)
{
    click(item(u"sourceButton"_s));
    ASSERT_TRUE(eventually([this] { return item(u"sourceSettings"_s) != nullptr; }));
    click(item(u"sourceSettings"_s));
    EXPECT_NE(settingsWindow(), nullptr);
}

} // namespace morvane
