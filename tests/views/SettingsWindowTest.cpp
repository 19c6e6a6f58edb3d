#include "WindowFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

class SettingsWindowTest : public WindowFixture {
protected:
    void SetUp() override
    {
        load();
        m_settings = settingsWindow();
        ASSERT_NE(m_settings, nullptr);
    }
    [[nodiscard]] QQuickItem *control(const QString &name) const { return item(m_settings, name); }
    void fill(const QString &name, const QString &text)
    {
        control(name)->forceActiveFocus();
        press(m_settings, Qt::Key_A, Qt::ControlModifier);
        type(m_settings, text);
    }
    void turnTo(const QString &page)
    {
        m_settings->setProperty("page", page);
        settle();
    }

    QQuickWindow *m_settings = nullptr;
};

TEST_F(SettingsWindowTest, FieldsGoToTheirSettingsAtOnce)
{
    fill(u"address"_s, u"http://a"_s);
    fill(u"model"_s, u"small"_s);
    EXPECT_EQ(m_aiSettings.address, u"http://a"_s);
    EXPECT_EQ(m_aiSettings.model, u"small"_s);

    control(u"temperature"_s)->forceActiveFocus();
    press(m_settings, Qt::Key_Right);
    EXPECT_DOUBLE_EQ(m_aiSettings.temperature, 0.8);
    control(u"maxContextMessages"_s)->forceActiveFocus();
    press(m_settings, Qt::Key_Up);
    EXPECT_EQ(m_aiSettings.maxContextMessages, 21);
    control(u"maxOutputTokens"_s)->forceActiveFocus();
    press(m_settings, Qt::Key_Down);
    EXPECT_EQ(m_aiSettings.maxOutputTokens, 2048 - 256);
}

TEST_F(SettingsWindowTest, AnAddressThatCannotBeUsedSaysWhy)
{
    m_aiSettings.addressProblem = u"The address needs a host."_s;
    Q_EMIT m_aiSettings.addressChanged();
    settle();
    EXPECT_TRUE(control(u"address"_s)->property("hasProblem").toBool());
    const auto all = allItems(m_settings);
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), [](QQuickItem *child) {
        return child->isVisible() && child->property("text") == u"The address needs a host."_s;
    }));
}

TEST_F(SettingsWindowTest, TheKeyGoesInAndIsNeverShownAgain)
{
    EXPECT_FALSE(control(u"removeKey"_s)->isVisible());
    EXPECT_EQ(control(u"key"_s)->property("echoMode").toInt(), 2) << "TextInput.Password";
    fill(u"key"_s, u"secret"_s);
    click(control(u"saveKey"_s));
    EXPECT_EQ(m_aiSettings.savedKeys, QStringList(u"secret"_s));
    EXPECT_EQ(control(u"key"_s)->property("text").toString(), QString());
    click(control(u"removeKey"_s));
    EXPECT_EQ(m_aiSettings.savedKeys, QStringList({u"secret"_s, QString()}));
    EXPECT_FALSE(control(u"removeKey"_s)->isVisible());
}

TEST_F(SettingsWindowTest, TheConnectionTestRunsCanBeCancelledAndSaysHowItWent)
{
    QQuickItem *button = control(u"testConnection"_s);
    click(button);
    EXPECT_EQ(m_aiSettings.testState, FakeAISettings::TestState::running);
    EXPECT_EQ(accessibleName(button), u"Cancel"_s);
    click(button);
    EXPECT_EQ(m_aiSettings.testState, FakeAISettings::TestState::untested);
    m_aiSettings.setTest(FakeAISettings::TestState::failed, u"It refused."_s, u"Check the key."_s);
    settle();
    const auto row = button->parentItem()->parentItem()->parentItem();
    EXPECT_EQ(accessibleName(row), u"It refused. Check the key."_s);
}

TEST_F(SettingsWindowTest, AModelIsPickedFromWhatTheServerLists)
{
    click(control(u"pickModel"_s));
    EXPECT_TRUE(m_aiSettings.serverModels->isFetching);
    EXPECT_EQ(accessibleName(control(u"modelPickerState"_s)), u"Asking the server…"_s);
    m_aiSettings.serverModels->answer({u"llama3.2:3b"_s, u"qwen2.5:7b"_s});
    settle();
    press(m_settings, Qt::Key_Down);
    press(m_settings, Qt::Key_Return);
    EXPECT_EQ(m_aiSettings.model, u"qwen2.5:7b"_s);
    EXPECT_FALSE(control(u"modelPickerState"_s));

    m_aiSettings.serverModels->answer({}, u"It refused."_s);
    click(control(u"pickModel"_s));
    m_aiSettings.serverModels->answer({}, u"It refused."_s);
    settle();
    EXPECT_EQ(accessibleName(control(u"modelPickerState"_s)), u"It refused."_s);
}

TEST_F(SettingsWindowTest, InstructionsAreSavedWhenTheFieldIsLeftAndResetAsksFirst)
{
    turnTo(u"instructions"_s);
    control(u"instructions.field"_s)->forceActiveFocus();
    type(m_settings, u"Be short."_s);
    turnTo(u"ai"_s);
    EXPECT_EQ(m_instructions.text, u"Be short."_s);
    turnTo(u"instructions"_s);
    const auto isAsked = [this] { return accessibleName(m_settings->activeFocusItem()) == "Cancel"_L1; };
    click(control(u"resetInstructions"_s));
    ASSERT_TRUE(eventually(isAsked));
    press(m_settings, Qt::Key_Escape);
    EXPECT_EQ(m_instructions.resets, 0);
    EXPECT_TRUE(m_settings->isVisible()) << "Escape closed the question and not the window";
    ASSERT_TRUE(eventually([&] { // the panel that fades takes no clicks, and lets none through
        click(control(u"resetInstructions"_s));
        return isAsked();
    }));
    press(m_settings, Qt::Key_Tab);
    press(m_settings, Qt::Key_Return);
    EXPECT_EQ(m_instructions.resets, 1);
    EXPECT_EQ(control(u"instructions.field"_s)->property("text").toString(), QString());
    m_instructions.problem = u"Sealed with a lost key."_s;
    Q_EMIT m_instructions.problemChanged();
    settle();
    EXPECT_EQ(accessibleName(control(u"instructionsProblem"_s)), u"Sealed with a lost key."_s);
}

TEST_F(SettingsWindowTest, AppearanceFollowsItsChoices)
{
    turnTo(u"appearance"_s);
    click(control(u"appearance.dark"_s));
    EXPECT_EQ(m_shell.appearance, u"dark"_s);
    control(u"textSize.large"_s)->forceActiveFocus(Qt::TabFocusReason);
    press(m_settings, Qt::Key_Return);
    EXPECT_EQ(m_shell.textSize, u"large"_s);
    click(control(u"reduceMotion"_s));
    EXPECT_FALSE(m_shell.reduceAnimation);
}

TEST_F(SettingsWindowTest, TheLedgerIsFollowedOnlyWhileItIsShown)
{
    EXPECT_FALSE(m_ledger.watching);
    turnTo(u"network"_s);
    EXPECT_TRUE(m_ledger.watching);
    EXPECT_FALSE(control(u"clearLedger"_s)->isEnabled());
    m_ledger.append({{u"time"_s, u"12:00"_s},
                     {u"host"_s, u"localhost"_s},
                     {u"place"_s, u"This Mac"_s},
                     {u"feature"_s, u"Chat"_s},
                     {u"carried"_s, u"none"_s},
                     {u"sent"_s, u"1 kB"_s},
                     {u"received"_s, u"2 kB"_s},
                     {u"outcome"_s, u"200"_s}});
    settle();
    click(control(u"clearLedger"_s));
    EXPECT_EQ(m_ledger.count(), 0);
    m_ledger.exportTo(QUrl(u"file:///nowhere/x.csv"_s));
    settle();
    EXPECT_TRUE(control(u"exportProblem"_s)->isVisible());
    press(m_settings, Qt::Key_Escape);
    EXPECT_FALSE(m_settings->isVisible());
    EXPECT_FALSE(m_ledger.watching);
}

} // namespace morvane
