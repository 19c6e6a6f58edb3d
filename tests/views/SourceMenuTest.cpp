#include "WindowFixture.h"

#include "persistence/SettingsStore.h"

#include <QGuiApplication>

namespace morvane {

using namespace Qt::StringLiterals;

class SourceMenuTest : public WindowFixture {
protected:
    [[nodiscard]] bool isOpen() const { return item(u"sourceSettings"_s) != nullptr; }
};

TEST_F(SourceMenuTest, APlaceIsPickedByKeysAndOneThatCannotRunIsNot)
{
    m_app->storage().settings->setHostedChatEnabled(true);
    item(u"sourceButton"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return isOpen(); }));
    EXPECT_TRUE(shows(u"This build has no private cloud."_s));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(isOpen()) << "the last one can't run";
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_FALSE(m_app->storage().settings->hostedChatEnabled());
    EXPECT_TRUE(eventually([this] { return !isOpen(); }));
    EXPECT_TRUE(item(u"sourceButton"_s)->hasActiveFocus()) << "where it was opened from";
}

TEST_F(SourceMenuTest, WhoCanReadAMessageIsInPlainViewBeforeItIsSent)
{
    const auto line = [this] { return accessibleName(item(u"sourceLine"_s)); };
    EXPECT_FALSE(line().contains(u"can read"_s)) << line().toStdString();
    m_app->storage().settings->setBaseURLString(u"https://api.example.org/v1"_s);
    settle();
    EXPECT_TRUE(line().contains(u"example.org can read what you send."_s)) << line().toStdString();
    EXPECT_TRUE(shows(u"example.org can read what you send."_s));
    m_app->storage().settings->setBaseURLString(u"http://192.168.7.7/v1"_s);
    settle();
    EXPECT_TRUE(line().contains(u"192.168.7.7 is not encrypted."_s)) << line().toStdString();
}

TEST_F(SourceMenuTest, NothingIsSaidOfAPlaceBeforeAModelIsChosen)
{
    EXPECT_TRUE(shows(u"Stays on this computer"_s));
    m_app->storage().settings->setModel({});
    settle();
    EXPECT_FALSE(shows(u"Stays on"_s));
    EXPECT_TRUE(shows(u"Not set up yet"_s));
    EXPECT_TRUE(accessibleName(item(u"sourceLine"_s)).endsWith(u"Goes nowhere yet"_s));
}

TEST_F(SourceMenuTest, ItsLastEntryLeadsToTheSettings)
{
    click(item(u"sourceButton"_s));
    ASSERT_TRUE(eventually([this] { return isOpen(); }));
    click(item(u"sourceSettings"_s));
    EXPECT_TRUE(eventually([this] { return QGuiApplication::focusWindow() != m_window; }))
        << "the settings have the focus";
}

} // namespace morvane
