#include "WindowFixture.h"

#include "ai/prompts/SystemPromptStore.h"
#include "app/AboutParts.h"
#include "memory/MemoryStore.h"
#include "network/NetworkLedger.h"
#include "persistence/SettingsStore.h"
#include "services/LoginStarting.h"
#include "services/WebAccessError.h"
#include "support/ScriptedServer.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"
#include "view_models/AccentInk.h"
#include "view_models/ShellViewModel.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/AboutViewModel.h"
#include "view_models/settings/InstructionsViewModel.h"
#include "view_models/settings/NetworkLedgerViewModel.h"
#include "view_models/settings/PrivacyViewModel.h"
#include "view_models/settings/SearchKeyViewModel.h"

#include <QAccessible>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <algorithm>
#include <semaphore>
#include <set>

namespace morvane {

using namespace Qt::StringLiterals;

const QByteArray wholeReply = R"({"choices":[{"message":{"role":"assistant","content":"Hi"}}]})";

class SettingsWindowTest : public WindowFixture {
protected:
    void SetUp() override
    {
        load();
        m_page = settingsWindow();
        ASSERT_NE(m_page, nullptr);
    }
    // The one of the page that is shown; null when it isn't drawn.
    [[nodiscard]] QQuickItem *control(const QString &name) const { return WindowDriver::item(m_page, name); }
    void pressKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        WindowDriver::press(m_page, key, modifiers);
    }
    void fill(const QString &name, const QString &text)
    {
        control(name)->forceActiveFocus();
        WindowDriver::press(m_page, Qt::Key_A, Qt::ControlModifier);
        WindowDriver::type(m_page, text);
    }
    void turnTo(const QString &page)
    {
        m_page->setProperty("page", page);
        settle();
    }
    [[nodiscard]] bool says(const QString &text) const { return shows(m_page, text); }
    // A question comes up on its harmless answer; the other one is taken.
    void confirm(const QString &button)
    {
        ASSERT_TRUE(eventually([&] { // a panel that fades takes no clicks, and lets none through
            click(control(button));
            return QTest::qWaitFor([this] { return isAt(m_page, u"Cancel"_s); }, 1000);
        }));
        pressKey(Qt::Key_Tab);
        pressKey(Qt::Key_Return);
    }

    QQuickWindow *m_page = nullptr;
};

TEST_F(SettingsWindowTest, FieldsGoToTheirSettingsAtOnceAndFollowThem)
{
    SettingsStore &settings = *m_app->storage().settings;
    fill(u"address"_s, u"http://a.example"_s);
    fill(u"model"_s, u"small"_s);
    EXPECT_EQ(settings.baseURLString(), u"http://a.example"_s);
    EXPECT_EQ(settings.model(), u"small"_s);
    EXPECT_TRUE(control(u"address"_s)->property("hasProblem").toBool());
    ASSERT_FALSE(m_app->presentation().aiSettings->addressProblem().isEmpty());
    EXPECT_TRUE(says(m_app->presentation().aiSettings->addressProblem())) << "why it can't be used";
    const auto step = [&](const QString &name, int key) {
        control(name)->forceActiveFocus();
        pressKey(key);
    };
    step(u"temperature"_s, Qt::Key_Right);
    EXPECT_DOUBLE_EQ(settings.temperature(), 0.8);
    step(u"maxContextMessages"_s, Qt::Key_Up);
    EXPECT_EQ(settings.maxContextMessages(), 31);
    step(u"maxOutputTokens"_s, Qt::Key_Down);
    EXPECT_EQ(settings.maxOutputTokens(), 1024 - 256);

    settings.setBaseURLString(u"http://localhost:1/v1"_s);
    settings.setMaxOutputTokens(77);
    settle();
    EXPECT_FALSE(control(u"address"_s)->property("hasProblem").toBool());
    EXPECT_EQ(control(u"address"_s)->property("text"), u"http://localhost:1/v1"_s);
    EXPECT_EQ(control(u"maxOutputTokens"_s)->property("value"), 77);
    const QString notice = u"A server nearby gets at least %1."_s.arg(QLocale().toString(4096));
    EXPECT_TRUE(says(notice));
    settings.setMaxOutputTokens(4096);
    EXPECT_FALSE(says(notice));
}

// A server that streams, refuses tools in its own words, and answers nothing else.
TEST_F(SettingsWindowTest, TheTestSaysWhatWorksWithFewRequestsEachInTheLedger)
{
    const QByteArray stream = R"(data: {"choices":[{"delta":{"content":"ok"},"finish_reason":"stop"}]})"
                              "\n\ndata: [DONE]\n\n";
    const ScriptedServer server([&](ScriptedServer::Connection &connection) {
        while (const auto request = connection.readRequest()) {
            const bool isChat = request->method() == "POST";
            const bool hasTools = request->body.contains("\"tools\"");
            connection.send(
                !isChat ? ScriptedServer::response("404 Not Found", {})
                : hasTools
                    ? ScriptedServer::response("500 Error", R"({"error":{"message":"tools need a flag"}})")
                    : ScriptedServer::response("200 OK",
                                               request->body.contains("stream") ? stream : wholeReply));
        }
    });
    SettingsStore &settings = *m_app->storage().settings;
    settings.setBaseURLString(server.url(u"/v1"_s).toString());
    settings.setModel(u"m"_s);
    for (const bool hasAbilities : {true, false}) {
        settings.setAbilitiesEnabled(hasAbilities);
        settle();
        EXPECT_FALSE(says(u"Replies appear as they are written."_s)) << "it ends with its settings";
        const std::size_t before = m_app->assistant().networkLedger->snapshot().entries.size();
        click(control(u"testConnection"_s));
        ASSERT_TRUE(eventually([&] { return says(u"The server answered."_s); }));
        EXPECT_TRUE(says(u"The model answers."_s));
        EXPECT_TRUE(says(u"Replies appear as they are written."_s));
        EXPECT_EQ(says(u"The server takes none, so chats run without them."_s), hasAbilities);
        const auto rows = m_app->assistant().networkLedger->snapshot().entries;
        EXPECT_EQ(rows.size() - before, hasAbilities ? 4U : 2U) << "and once, whether it is another kind";
        for (const NetworkLedger::Entry &row : rows)
            EXPECT_EQ(row.feature, EgressFeature::aiModel);
    }
    settings.setModel(u"another"_s);
    EXPECT_TRUE(eventually([&] { return !says(u"The model answers."_s); }));
}

TEST_F(SettingsWindowTest, AKeyGoesInIsNeverShownAgainAndSaysWhyItWasNotSaved)
{
    for (const auto &[page, account] :
         {std::pair{u"ai"_s, u"ai-provider-api-key"_s}, {u"abilities"_s, u"brave-search-api-key"_s}}) {
        turnTo(page);
        m_keychain.setFailure(KeychainError(KeychainError::Operation::Save, KeychainStatus::NotAvailable));
        fill(u"key"_s, u"secret"_s);
        auto *face = QAccessible::queryAccessibleInterface(control(u"key"_s));
        EXPECT_TRUE(face->state().passwordEdit);
        EXPECT_FALSE(
            (face->text(QAccessible::Value) + face->textInterface()->text(0, 99)).contains(u"secret"_s));
        click(control(u"saveKey"_s));
        EXPECT_TRUE(eventually([this] { return says(u"could not be saved to the keyring."_s); }));
        EXPECT_EQ(control(u"removeKey"_s), nullptr);
        m_keychain.setFailure({});
        EXPECT_EQ(control(u"key"_s)->property("echoMode").toInt(), 2) << "TextInput.Password";
        fill(u"key"_s, u" secret "_s);
        pressKey(Qt::Key_Return);
        EXPECT_EQ(control(u"key"_s)->property("length").toInt(), 0);
        ASSERT_TRUE(eventually([this] { return control(u"removeKey"_s) != nullptr; }));
        EXPECT_EQ(m_keychain.read(account), u"secret"_s);
        click(control(u"removeKey"_s));
        ASSERT_TRUE(eventually([this] { return control(u"removeKey"_s) == nullptr; }));
        EXPECT_EQ(m_keychain.read(account), std::nullopt);
    }
}

TEST_F(SettingsWindowTest, TheConnectionTestRunsCanBeCancelledAndSaysHowItWent)
{
    QQuickItem *button = control(u"testConnection"_s);
    const auto said = [&] { return accessibleName(button->parentItem()->parentItem()); };
    ScriptedServer silent([](ScriptedServer::Connection &connection) { connection.awaitClose(); });
    m_app->storage().settings->setBaseURLString(silent.url(u"/v1"_s).toString());
    click(button);
    EXPECT_EQ(said(), u"Asking the server…"_s);
    EXPECT_EQ(accessibleName(button), u"Cancel"_s);
    click(button);
    EXPECT_EQ(accessibleName(button), u"Test"_s);
    EXPECT_EQ(said(), u"Asks the server for short replies, to see what works."_s);

    const struct {
        QByteArray status;
        QString words;
    } outcomes[] = {
        {"401 No", u"The AI provider rejected the API key. Check the API key in Settings → AI."_s},
        {"200 OK", u"The server answered."_s}};
    for (const auto &[status, words] : outcomes) {
        const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response(
            status, R"({"choices":[{"message":{"role":"assistant","content":"Hi"}}]})")));
        m_app->storage().settings->setBaseURLString(server.url(u"/v1"_s).toString());
        settle();
        EXPECT_EQ(says(u"is not sent anywhere else."_s), status == "200 OK") << "it is the former server's";
        for (const bool hasItsKey : {false, true}) {
            if (hasItsKey) {
                fill(u"key"_s, u"sk"_s);
                pressKey(Qt::Key_Return);
                ASSERT_TRUE(eventually(
                    [this] { return control(u"removeKey"_s) && says(u"A key is saved. It is kept"_s); }));
            }
            const std::size_t before = server.requests().size();
            click(button);
            ASSERT_TRUE(eventually([&, words = words] {
                return server.requests().size() > before && said() == words;
            })) << said().toStdString();
            EXPECT_EQ(server.requests().back().head.contains("Bearer sk\r\n"), hasItsKey);
        }
        m_app->storage().settings->setTemperature(m_app->storage().settings->temperature() + 0.1);
        settle();
        EXPECT_EQ(said(), u"Asks the server for short replies, to see what works."_s)
            << "a result ends with its settings";
    }
}

TEST_F(SettingsWindowTest, AModelIsPickedFromWhatTheServerLists)
{
    SettingsStore &settings = *m_app->storage().settings;
    settings.setModel(u"llama3.2:3b"_s); // it is marked first
    const struct {
        QByteArray body;
        QString words; // in place of the list
    } answers[] = {{R"({"data":[]})", u"The server lists no models."_s},
                   {"nonsense", u"The server's answer is no list of models."_s},
                   {R"({"data":[{"id":"llama3.2:3b"},{"id":"qwen2.5:7b"}]})", {}}};
    for (const auto &[body, words] : answers) {
        const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", body)));
        settings.setBaseURLString(server.url(u"/v1"_s).toString());
        click(control(u"pickModel"_s));
        ASSERT_TRUE(eventually([&, words = words] {
            const QQuickItem *list = control(u"modelList"_s);
            QQuickItem *state = control(u"modelPickerState"_s);
            return words.isEmpty() ? list && list->property("count") == 2
                                   : state && accessibleName(state).startsWith(words);
        })) << body.constData();
        pressKey(words.isEmpty() ? Qt::Key_Down : Qt::Key_Escape);
    }
    pressKey(Qt::Key_Return);
    EXPECT_EQ(settings.model(), u"qwen2.5:7b"_s);

    QByteArray many = "[";
    for (int i = 0; i < 5'000; ++i)
        many += "{\"id\":\"maker/model-" + QByteArray::number(i) + "\"},";
    const ScriptedServer large(
        ScriptedServer::answering(ScriptedServer::response("200 OK", many + R"("last"])")));
    settings.setBaseURLString(large.url(u"/v1/chat/completions"_s).toString());
    click(control(u"pickModel"_s));
    ASSERT_TRUE(eventually([this] { return control(u"modelSearch"_s) != nullptr; }));
    EXPECT_EQ(large.requests().back().target(), "/v1/models");
    pressKey(Qt::Key_Return);
    EXPECT_EQ(settings.model(), u"qwen2.5:7b"_s) << "nothing was chosen yet";
    WindowDriver::type(m_page, u"4321 MAKER"_s);
    pressKey(Qt::Key_Return);
    EXPECT_EQ(settings.model(), u"maker/model-4321"_s);
}

// While the list is looked at the server gives another one.
TEST_F(SettingsWindowTest, TheMarkedModelStaysMarkedInAnotherList)
{
    SettingsStore &settings = *m_app->storage().settings;
    std::binary_semaphore mayAnswer(1);
    QByteArray listed = R"({"data":[{"id":"b"},{"id":"c"}]})";
    const ScriptedServer server([&](ScriptedServer::Connection &connection) {
        while (connection.readRequest()) {
            mayAnswer.acquire();
            connection.send(ScriptedServer::response("200 OK", listed));
        }
    });
    settings.setModel(u"b"_s);
    settings.setBaseURLString(server.url(u"/v1"_s).toString());
    const auto &models = *m_app->presentation().aiSettings->serverModels();
    click(control(u"pickModel"_s));
    ASSERT_TRUE(eventually([&] { return models.count() == 2; }));
    pressKey(Qt::Key_Escape);
    listed = R"({"data":[{"id":"a"},{"id":"b"},{"id":"c"}]})";
    click(control(u"pickModel"_s));
    pressKey(Qt::Key_Down);
    mayAnswer.release();
    ASSERT_TRUE(eventually([&] { return models.count() == 3; }));
    EXPECT_EQ(control(u"modelList"_s)->property("currentIndex"), 2);
    pressKey(Qt::Key_Return);
    EXPECT_EQ(settings.model(), u"c"_s);
}

TEST_F(SettingsWindowTest, InstructionsAreSavedWhenTheFieldIsLeftAndResetAsksFirst)
{
    turnTo(u"instructions"_s);
    fill(u"instructions.field"_s, u"Be short."_s);
    turnTo(u"ai"_s);
    EXPECT_EQ(m_app->presentation().instructions->text(), u"Be short."_s);
    turnTo(u"instructions"_s);
    click(control(u"resetInstructions"_s));
    ASSERT_TRUE(eventually([this] { return isAt(m_page, u"Cancel"_s); }));
    pressKey(Qt::Key_Escape);
    EXPECT_EQ(m_app->presentation().instructions->text(), u"Be short."_s);
    EXPECT_TRUE(m_page->isVisible()) << "Escape closed the question and not the window";
    confirm(u"resetInstructions"_s);
    EXPECT_EQ(m_app->presentation().instructions->text(), QString());
    EXPECT_EQ(control(u"instructions.field"_s)->property("text").toString(), QString());
}

TEST_F(SettingsWindowTest, WhatALostKeyClosesSaysSoAndClearingIsTheWayOut)
{
    m_app->presentation().instructions->setText(u"Be short."_s);
    m_app->assistant().memory->remember(u"Likes tea."_s);
    m_keychain.remove(u"local-data-key"_s);
    start();
    SetUp();
    turnTo(u"instructions"_s);
    EXPECT_EQ(accessibleName(control(u"instructionsProblem"_s)), SystemPromptStore::loadFailedMessage());
    EXPECT_FALSE(control(u"instructions.field"_s)->isEnabled());
    confirm(u"resetInstructions"_s);
    EXPECT_TRUE(control(u"instructions.field"_s)->isEnabled());
    turnTo(u"memory"_s);
    EXPECT_TRUE(accessibleName(control(u"memoryProblem"_s)).contains(u"a key this computer no longer has"_s));
    confirm(u"clearMemory"_s);
    EXPECT_FALSE(m_app->assistant().memory->loadFailed());
    EXPECT_EQ(control(u"memoryProblem"_s), nullptr);

    const QString notes = MemoryStore::defaultDirectory(SupportFolders::inProfile(m_profile.path()));
    PrivateFile::write(notes + u"/memory.md"_s, QByteArray((16 << 20) + 1, 'x'));
    start();
    SetUp();
    turnTo(u"memory"_s);
    EXPECT_TRUE(accessibleName(control(u"memoryProblem"_s)).contains(u"can't be read"_s));
}

TEST_F(SettingsWindowTest, TheDesktopsSwitchesShowWhatHoldsAndNotWhatWasWished)
{
    struct Login : LoginStarting {
        bool on = false;
        bool refuses = false;
        bool isOn() override { return on; }
        bool set(bool wished) override
        {
            on = refuses ? on : wished;
            return !refuses;
        }
    } login;
    turnTo(u"appearance"_s);
    EXPECT_EQ(WindowDriver::item(settingsWindow(), u"launchAtLogin"_s), nullptr) << "nobody starts it here";
    m_desktop.login = &login;
    start();
    SetUp();
    turnTo(u"appearance"_s);
    const auto isShownOn = [this] {
        settle();
        return control(u"launchAtLogin.switch"_s)->property("checked").toBool();
    };
    click(control(u"launchAtLogin.switch"_s));
    EXPECT_TRUE(login.on && isShownOn());
    login.on = false; // by another program, of which nobody told
    turnTo(u"ai"_s);
    turnTo(u"appearance"_s);
    EXPECT_FALSE(isShownOn());
    login.refuses = true;
    click(control(u"launchAtLogin.switch"_s));
    EXPECT_FALSE(isShownOn());
    EXPECT_TRUE(shows(settingsWindow(), u"did not take it"_s));

    click(control(u"showInPanel.switch"_s));
    EXPECT_FALSE(m_app->presentation().settings.showMenuBarIcon());
    m_desktop = {};
    start();
}

TEST_F(SettingsWindowTest, AppearanceFollowsItsChoices)
{
    SettingsStore &settings = *m_app->storage().settings;
    const auto ground = [this](const QString &choice = {}) {
        if (!choice.isEmpty())
            click(control(choice));
        return m_window->color();
    };
    turnTo(u"appearance"_s);
    const QColor light = ground(u"appearance.light"_s);
    const QColor dark = ground(u"appearance.dark"_s);
    EXPECT_LT(dark.lightness(), light.lightness());
    const QColor dusk = ground(u"appearance.gallery"_s);
    EXPECT_NE(dusk, dark);
    settings.setGalleryBackdrop(u"forest"_s);
    EXPECT_NE(ground(), dusk);
    settings.setGalleryBackdrop(u"no such place"_s);
    EXPECT_EQ(ground(), dusk);
    EXPECT_EQ(ground(u"appearance.system"_s), light);
    m_app->presentation().shell->setDesktopLook({.isDark = true});
    EXPECT_EQ(ground(), dark);

    const auto height = [this] { return control(u"textSize.large"_s)->height(); };
    const double before = height();
    control(u"textSize.large"_s)->forceActiveFocus(Qt::TabFocusReason);
    pressKey(Qt::Key_Return);
    EXPECT_EQ(settings.chatTextSize(), ChatTextSize::large);
    EXPECT_NEAR(height(), before * 1.15, 1);
    for (const auto &[key, choice] : {std::pair{Qt::Key_Right, u"Large"_s}, {Qt::Key_Left, u"Medium"_s}}) {
        pressKey(key);
        EXPECT_TRUE(isAt(m_page, choice)) << "the arrows stay among the sizes";
    }
    click(control(u"reduceMotion"_s));
    EXPECT_FALSE(settings.reduceAnimation());
}

TEST_F(SettingsWindowTest, TheSearchFindsRowsOfEveryPageAndReturnGoesThere)
{
    QQuickItem *field = control(u"settingsSearch"_s);
    ASSERT_NE(field, nullptr);
    const auto first = [&](const QString &words) {
        pressKey(Qt::Key_F, Qt::ControlModifier);
        WindowDriver::type(m_page, words);
        settle();
        const QQuickItem *found = control(u"settingsResult.0"_s);
        return found ? accessibleName(const_cast<QQuickItem *>(found)) : QString();
    };
    for (const auto &[words, name] : {std::pair{u"temperat"_s, u"Temperature, AI"_s},
                                      {u"inventive"_s, u"Temperature, AI"_s},
                                      {u"theme"_s, u"Colours, Appearance"_s},
                                      {u"gallery"_s, u"Colours, Appearance"_s},
                                      {u"wipe"_s, u"Delete All Local Data, Privacy"_s},
                                      {u"\u00c9CHO nothing"_s, QString()},
                                      {u"network"_s, u"Network"_s},
                                      {u"x"_s.repeated(5000), QString()},
                                      {u"voice"_s, u"Voice"_s}}) {
        EXPECT_EQ(first(words), name) << words.left(40).toStdString();
        EXPECT_LE(field->property("text").toString().size(), 200);
    }
    pressKey(Qt::Key_Escape);
    EXPECT_TRUE(control(u"settingsResults"_s) == nullptr && m_page->isVisible()) << "it emptied the field";
    EXPECT_EQ(first(u"reduce motion"_s), u"Reduce motion, Appearance"_s);
    pressKey(Qt::Key_Down);
    pressKey(Qt::Key_Return);
    EXPECT_EQ(m_page->property("page"), u"appearance"_s);
    EXPECT_TRUE(eventually([this] { return isAt(m_page, u"Reduce motion"_s); }));
    ASSERT_NE(control(u"rowMark"_s), nullptr);
    const auto middle = [](const QQuickItem *item) { return item->mapToScene({0, item->height() / 2}).y(); };
    EXPECT_NEAR(middle(control(u"rowMark"_s)), middle(control(u"reduceMotion"_s)), 1);
    EXPECT_EQ(first(u"idle"_s), u"Lock when idle, Privacy"_s) << "which shows only while there is a lock";
    EXPECT_EQ(control(u"rowMark"_s), nullptr);
    pressKey(Qt::Key_Return);
    EXPECT_TRUE(eventually([this] { return control(u"rowMark"_s) && isAt(m_page, u"Lock MorvaneGPT"_s); }));

    EXPECT_TRUE(eventually([this] { return !m_app->presentation().about.page->updates().isEmpty(); }))
        << "a page that nobody has turned to yet reads what it shows";
    EXPECT_EQ(first(u"late row"_s), QString());
    QQuickItem late;
    late.setProperty("title", u"Late row"_s);
    late.setParentItem(m_page->findChild<QQuickItem *>(u"eraseAll"_s)->parentItem());
    EXPECT_TRUE(eventually([this] {
        const QQuickItem *found = control(u"settingsResult.0"_s);
        return found && accessibleName(const_cast<QQuickItem *>(found)) == u"Late row, Privacy"_s;
    }));
}

TEST_F(SettingsWindowTest, KeysAndTheWheelZoomBothWindowsWithinBounds)
{
    const ShellViewModel &shell = *m_app->presentation().shell;
    turnTo(u"appearance"_s);
    for (int step = 0; step < 9; ++step)
        pressKey(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(shell.zoom(), 200);
    EXPECT_FALSE(control(u"zoomIn"_s)->isEnabled());
    press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(shell.zoom(), 175);
    EXPECT_DOUBLE_EQ(shell.textScale(), 1.75);
    click(control(u"usualSize"_s));
    EXPECT_EQ(shell.zoom(), 100);
    const auto turn = [this](int eighths, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event({300, 300}, {300, 300}, {}, {0, eighths}, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_window, &event);
    };
    turn(240, Qt::ControlModifier);
    turn(-60, Qt::ControlModifier);
    EXPECT_EQ(shell.zoom(), 125);
    turn(-60, Qt::ControlModifier);
    EXPECT_EQ(shell.zoom(), 110);
    turn(-240, Qt::NoModifier);
    EXPECT_EQ(shell.zoom(), 110);
    for (const auto &[stored, meant] : {std::pair{-1, 80}, {107, 110}, {99999, 200}}) {
        m_app->storage().settings->setZoomPercent(stored);
        EXPECT_EQ(shell.zoom(), meant);
    }
}

// Whatever colour the desktop likes, it is told apart from what it stands on.
TEST_F(SettingsWindowTest, TheDesktopsAccentIsAdjustedUntilItCanBeRead)
{
    ShellViewModel &shell = *m_app->presentation().shell;
    SettingsStore &settings = *m_app->storage().settings;
    for (const bool isHigh : {false, true}) {
        for (const auto &accent : {std::array{1.0, 1.0, 1.0},
                                   {0.0, 0.0, 0.0},
                                   {1.0, 0.9, 0.0},
                                   {0.3, 0.3, 0.32},
                                   {0.2, 0.5, 0.9}}) {
            shell.setDesktopLook({.hasHighContrast = isHigh, .accent = accent});
            for (const auto &[appearance, ground] :
                 {std::pair{AppAppearance::light, QColor(0xe9, 0xea, 0xf2)},
                  {AppAppearance::dark, QColor(0x2b, 0x2c, 0x37)},
                  {AppAppearance::gallery, QColor(0x25, 0x47, 0x2f)}}) {
                settings.setAppearance(appearance);
                EXPECT_GE(AccentInk::contrast(QColor(shell.accent()), ground), isHigh ? 7 : 4.5);
            }
        }
    }
    settings.setAppearance(AppAppearance::dark);
    shell.setDesktopLook({.accent = std::array{1.0, 0.9, 0.0}});
    EXPECT_EQ(shell.accent(), u"#ffe600"_s) << "left alone where it can be read";
    shell.setDesktopLook({.hasReducedMotion = true});
    EXPECT_TRUE(shell.accent().isEmpty());
    settings.setReduceAnimation(false);
    EXPECT_TRUE(shell.reducesAnimation());
}

TEST_F(SettingsWindowTest, HowLongChatsAreKeptIsChosenAndSaysWhatThatMeans)
{
    turnTo(u"privacy"_s);
    EXPECT_TRUE(says(u"stays until you delete it"_s));
    click(control(u"retention.thirtyDays"_s));
    EXPECT_EQ(m_app->storage().settings->conversationRetention(), ConversationRetention::thirtyDays);
    EXPECT_TRUE(says(u"are deleted for good"_s));
}

TEST_F(SettingsWindowTest, ALockThatNothingCouldOpenIsNotShownAsOn)
{
    turnTo(u"privacy"_s);
    click(control(u"appLock.switch"_s));
    ASSERT_TRUE(eventually([this] { return says(u"so there is nothing to unlock with"_s); }));
    EXPECT_FALSE(control(u"appLock.switch"_s)->property("checked").toBool());
    EXPECT_FALSE(m_app->storage().settings->appLockEnabled());
}

TEST_F(SettingsWindowTest, AllIsDeletedOnlyOnceThatWasTyped)
{
    turnTo(u"privacy"_s);
    const QSignalSpy confirmed(m_app->presentation().privacy.get(), &PrivacyViewModel::erasureConfirmed);
    click(control(u"eraseAll"_s));
    EXPECT_TRUE(says(u"Files you exported to your Documents folder"_s));
    for (const auto *typed : {"d", "elet", "e"}) {
        EXPECT_FALSE(control(u"confirmErasure"_s)->isEnabled());
        WindowDriver::type(m_page, QString::fromLatin1(typed));
        settle();
    }
    click(control(u"confirmErasure"_s));
    EXPECT_EQ(confirmed.count(), 1);
    pressKey(Qt::Key_Escape);
}

TEST_F(SettingsWindowTest, AReportOfAProblemIsReadBeforeItIsSaved)
{
    AboutViewModel &about = *m_app->presentation().about.page;
    turnTo(u"about"_s);
    EXPECT_TRUE(says(u"MorvaneGPT "_s + Product::version));
    EXPECT_TRUE(eventually([this] { return says(u"Built by yourself"_s); }));
    click(control(u"reportProblem"_s));
    ASSERT_TRUE(eventually([this] { return control(u"saveReader"_s) != nullptr; }));
    EXPECT_TRUE(about.readerText().contains(u"Qt platform: offscreen"_s));
    EXPECT_TRUE(says(u"Settings that were changed"_s));
    EXPECT_FALSE(about.save(QUrl(u"file:///dev/null/x.txt"_s)));
    EXPECT_TRUE(says(u"could not be saved"_s));
    const QString path = m_profile.filePath(u"problem.txt"_s);
    EXPECT_TRUE(about.save(QUrl::fromLocalFile(path)));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()), about.readerText());
    pressKey(Qt::Key_Escape);
    EXPECT_TRUE(eventually([&] { return about.readerTitle().isEmpty(); }));
    for (const auto &read :
         {&AboutViewModel::readReleaseNotes, &AboutViewModel::readThreatModel, &AboutViewModel::readGuide}) {
        (about.*read)();
        EXPECT_TRUE(about.readerText().size() > 2000 &&
                    !about.readerText().contains(u"]("_s + u"screenshots"_s));
    }
    about.closeReader();
    m_page->close();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    press(Qt::Key_Question, Qt::ControlModifier);
    EXPECT_TRUE(eventually([&] { // the list of keys leads there as well
        if (named(u"Report a Problem…"_s))
            click(named(u"Report a Problem…"_s));
        return says(u"Settings that were changed"_s);
    }));
}

TEST_F(SettingsWindowTest, ACrashIsToldOfAtTheNextStartAndShownOnTheAboutPage)
{
    const QString folder = m_profile.filePath(u"state/ai.morvane.macos/"_s);
    PrivateFile::write(folder + u"crash-000000000001-1.txt"_s, "Cause: a <b>test</b>");
    m_app->start();
    ASSERT_TRUE(eventually([this] { return shows(u"ended unexpectedly"_s); }));
    click(named(u"Show"_s));
    ASSERT_TRUE(eventually([this] { return says(u"Cause: a <b>test</b>"_s); })) << "as it is written";
    pressKey(Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { // a panel that fades takes the click
        if (control(u"deleteCrashes"_s))
            click(control(u"deleteCrashes"_s));
        return says(u"No report of a crash"_s);
    }));
    EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList());
}

TEST_F(SettingsWindowTest, TheLedgerIsFollowedOnlyWhileItIsShown)
{
    NetworkLedgerViewModel &ledger = *m_app->presentation().networkLedger;
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "{}")));
    m_app->storage().settings->setBaseURLString(server.url(u"/v1"_s).toString());
    m_app->presentation().aiSettings->serverModels()->fetch();
    ASSERT_TRUE(
        eventually([this] { return !m_app->presentation().aiSettings->serverModels()->isFetching(); }));
    EXPECT_EQ(ledger.rowCount(), 0);
    turnTo(u"network"_s);
    ASSERT_TRUE(eventually([this] { return control(u"clearLedger"_s)->isEnabled(); }));
    EXPECT_TRUE(says(u"HTTP 200"_s));
    ledger.exportTo(QUrl(u"file:///dev/null/x.csv"_s));
    settle();
    EXPECT_NE(control(u"exportProblem"_s), nullptr);
    EXPECT_TRUE(ledger.exportTo(QUrl::fromLocalFile(m_profile.filePath(u"x.csv"_s))));
    settle();
    EXPECT_EQ(control(u"exportProblem"_s), nullptr);
    click(control(u"clearLedger"_s));
    EXPECT_FALSE(says(u"HTTP 200"_s));
    EXPECT_FALSE(control(u"clearLedger"_s)->isEnabled());
    pressKey(Qt::Key_Escape);
    EXPECT_FALSE(m_page->isVisible());
    EXPECT_FALSE(ledger.isWatching());
}

TEST_F(SettingsWindowTest, LedgerColumnsStandStillUnderTheirHeadingsAndARowOpens)
{
    NetworkLedger &ledger = *m_app->assistant().networkLedger;
    const auto record = [&](const QString &host, const EgressOutcome &outcome) {
        ledger.record({.startedAt = m_clock.now(), .host = host, .bytesSent = 1234567, .outcome = outcome});
    };
    record(u"a-host-whose-name-is-much-longer-than-any-column-could-ever-be.example"_s,
           {EgressOutcome::Failed{u"The certificate of the server could not be checked at all"_s}});
    record(u"b.example"_s, {EgressOutcome::Completed{200}});
    turnTo(u"network"_s);
    ASSERT_TRUE(eventually([this] { return says(u"b.example"_s); }));

    const auto placesOf = [this](const QString &name) {
        std::set<double> places;
        for (const QQuickItem *cell : WindowDriver::allItems(m_page)) {
            if (cell->objectName() == name && cell->isVisible())
                places.insert(cell->mapToScene({}).x());
        }
        return places;
    };
    for (const int width : {860, 640}) {
        m_page->resize(width, 620);
        settle();
        const std::set<double> headings = placesOf(u"ledgerHeading"_s);
        EXPECT_EQ(headings.size(), width > 700 ? 4U : 3U);
        for (const QString &column : {u"ledgerTime"_s, u"ledgerPlace"_s, u"ledgerOutcome"_s}) {
            const std::set<double> cells = placesOf(column);
            ASSERT_EQ(cells.size(), 1U) << column.toStdString() << " at " << width;
            EXPECT_TRUE(headings.contains(*cells.begin())) << column.toStdString() << " at " << width;
        }
    }

    control(u"ledgerRows"_s)->forceActiveFocus();
    pressKey(Qt::Key_Return);
    EXPECT_TRUE(says(u"1.18 MiB (1,234,567 bytes)"_s));
    const auto openedRow = [this] {
        const QQuickItem *item = control(u"ledgerDetails"_s);
        while (item && item->objectName() != "ledgerRow"_L1)
            item = item->parentItem();
        return item ? item->property("index").toInt() : -1;
    };
    EXPECT_EQ(openedRow(), 0);
    record(u"c.example"_s, {EgressOutcome::Blocked{u"private data"_s}});
    ASSERT_TRUE(eventually([&] { return openedRow() == 1; })) << "the same row, one further down";

    for (int n = 0; n < 9; ++n)
        record(u"d.example"_s, {EgressOutcome::Completed{200}});
    m_page->resize(860, 800);
    QQuickItem *const list = control(u"ledgerRows"_s);
    ASSERT_TRUE(eventually([&] { return list->property("count").toInt() == 12; }));
    list->setProperty("currentIndex", 11);
    list->setProperty("contentY", list->property("originY"));
    list->forceActiveFocus();
    pressKey(Qt::Key_Return);
    const auto hidden = [&] { // px of the last row's details
        const QQuickItem *details = control(u"ledgerDetails"_s);
        return details ? details->mapToItem(list, {0, details->height()}).y() - list->height() : 1;
    };
    EXPECT_TRUE(eventually([&] { return hidden() <= 0 && list->property("atYEnd").toBool(); }))
        << "it stays in sight while it opens";

    fill(u"ledgerFilter"_s, u"BLOCKED"_s);
    EXPECT_EQ(control(u"ledgerRows"_s)->property("count").toInt(), 1);
    fill(u"ledgerFilter"_s, u"nowhere"_s);
    EXPECT_TRUE(says(u"No connection matches."_s));
}

TEST_F(SettingsWindowTest, SwitchesApplyAtOnceAndAnAbilityThatIsOffSaysWhy)
{
    SettingsStore &settings = *m_app->storage().settings;
    turnTo(u"abilities"_s);
    EXPECT_FALSE(says(u"Turn on Web access."_s));
    click(control(u"abilities.web.switch"_s));
    EXPECT_TRUE(says(u"Turn on Web access."_s));
    for (const auto &name : {u"screen"_s, u"desktop"_s, u"memory"_s, u"enabled"_s})
        click(control(u"abilities."_s + name + u".switch"_s));
    EXPECT_EQ(std::tuple(settings.webAccessEnabled(), settings.screenAwarenessEnabled(),
                         settings.desktopActionsEnabled(), settings.memoryEnabled(),
                         settings.abilitiesEnabled()),
              std::tuple(false, true, true, false, false));
    EXPECT_TRUE(says(u"Abilities are switched off."_s));
    EXPECT_FALSE(control(u"abilities.web.switch"_s)->isEnabled());
    turnTo(u"memory"_s);
    click(control(u"memory.enabled.switch"_s));
    EXPECT_TRUE(settings.memoryEnabled());
}

TEST_F(SettingsWindowTest, TheSearchKeyIsTried)
{
    m_keychain.save(u"bad"_s, u"own"_s);
    const auto tester = [](QString tried, std::stop_token) -> QCoro::Task<> {
        if (tried != "good"_L1)
            throw WebAccessError(WebAccessError::Plain::searchKeyRejected);
        co_return;
    };
    SearchKeyViewModel key(m_keychain, u"own"_s, tester, *m_work);
    const auto items = m_page->findChildren<QQuickItem *>();
    QQuickItem *const abilities = *std::ranges::find_if(
        items, [](const QQuickItem *item) { return item->property("searchKey").isValid(); });
    abilities->setProperty("searchKey", QVariant::fromValue(&key));
    turnTo(u"abilities"_s);
    for (const auto &words : {u"The search service rejected that key."_s, u"The key works."_s}) {
        EXPECT_TRUE(says(u"Searches the web once, for the word “test”."_s));
        click(control(u"testSearchKey"_s));
        EXPECT_TRUE(eventually([&] { return says(words); })) << words.toStdString();
        fill(u"key"_s, u"good"_s);
        pressKey(Qt::Key_Return);
        EXPECT_TRUE(eventually([&] { return !says(words); })) << "what came of the former key is gone";
    }
    abilities->setProperty("searchKey", QVariant::fromValue(m_app->presentation().searchKey.get()));
}

TEST_F(SettingsWindowTest, ANoteIsEditedInPlaceAndDeleted)
{
    MemoryStore &memory = *m_app->assistant().memory;
    memory.remember(u"Lives in Oslo."_s);
    memory.remember(u"Likes tea."_s); // the latest stands first
    turnTo(u"memory"_s);
    for (const auto &[words, key] :
         {std::pair{u"Likes rooibos."_s, Qt::Key_Return}, {u"x"_s, Qt::Key_Escape}}) {
        click(control(u"editNote"_s));
        fill(u"noteField"_s, words);
        pressKey(key);
        EXPECT_EQ(memory.facts().back().text, u"Likes rooibos."_s);
    }
    // Looked at and left, a note stays as it is, however long.
    memory.update(memory.facts().back().id, u"👨‍👩‍👧"_s.repeated(200));
    const QString family = memory.facts().back().text;
    click(control(u"editNote"_s));
    pressKey(Qt::Key_Return);
    EXPECT_EQ(memory.facts().back().text, family);
    click(control(u"removeNote"_s));
    ASSERT_EQ(memory.facts().size(), 1U);
    EXPECT_EQ(memory.facts().front().text, u"Lives in Oslo."_s);
}

} // namespace morvane
