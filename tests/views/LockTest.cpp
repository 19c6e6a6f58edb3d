#include "WindowFixture.h"

#include "ai/prompts/SystemPromptStore.h"
#include "memory/MemoryStore.h"
#include "network/NetworkLedger.h"
#include "persistence/SettingsStore.h"
#include "security/DataKey.h"
#include "security/LocalDataVault.h"
#include "services/AppLockService.h"
#include "support/Await.h"
#include "support/ProcessMemory.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/AttachmentDesk.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/AppLockViewModel.h"
#include "view_models/settings/PrivacyViewModel.h"

#include <QAccessible>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// All that a screen reader could be told of a window.
void collect(QAccessibleInterface *face, QStringList &words)
{
    if (!face || !face->isValid())
        return;
    for (const auto kind :
         {QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help})
        words += face->text(kind);
    if (auto *const text = face->textInterface())
        words += text->text(0, text->characterCount());
    for (int i = 0; i < face->childCount(); ++i)
        collect(face->child(i), words);
}

// Words that stand in this process only where the program put them: here they are kept veiled.
class Marked {
public:
    explicit Marked(const QByteArray &bytes)
    {
        for (const char byte : bytes)
            m_veiled.push_back(static_cast<char>(byte ^ veil));
    }
    static Marked made()
    {
        QByteArray letters;
        for (int i = 0; i < 14; ++i)
            letters += static_cast<char>('a' + QRandomGenerator::global()->bounded(26));
        return Marked(letters);
    }
    [[nodiscard]] QByteArray bytes() const
    {
        QByteArray bytes;
        for (const char byte : m_veiled)
            bytes += static_cast<char>(byte ^ veil);
        return bytes;
    }
    [[nodiscard]] QString text() const { return QString::fromLatin1(bytes()); }
    // A character takes `width` bytes.
    [[nodiscard]] bool isAt(const char *place, std::size_t width) const
    {
        for (std::size_t i = 0; i < m_veiled.size(); ++i) {
            if ((place[i * width] ^ veil) != m_veiled[i] || (width == 2 && place[i * 2 + 1] != 0))
                return false;
        }
        return true;
    }
    [[nodiscard]] std::size_t size() const { return m_veiled.size(); }
    [[nodiscard]] char first() const { return static_cast<char>(m_veiled.front() ^ veil); }

private:
    static constexpr char veil = 0x5a;
    std::vector<char> m_veiled;
};

// How often any of them stands in what this process may write to, and where.
QStringList foundInMemory(const std::vector<Marked> &marks)
{
    constexpr std::size_t window = 1 << 20;
    constexpr std::size_t overlap = 256;
    auto *const buffer = static_cast<char *>(
        mmap(nullptr, window, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    QFile maps(u"/proc/self/maps"_s);
    (void)maps.open(QIODevice::ReadOnly);
    QStringList found;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        std::uintptr_t from = 0;
        std::uintptr_t to = 0;
        char access[5] = {};
        if (std::sscanf(line.constData(), "%lx-%lx %4s", &from, &to, access) != 3 || access[1] != 'w')
            continue;
        for (std::uintptr_t at = from; at < to; at += window - overlap) {
            if (at <= reinterpret_cast<std::uintptr_t>(buffer) + window &&
                at + window >= reinterpret_cast<std::uintptr_t>(buffer))
                continue; // or what is found would be found again
            const ssize_t size =
                pread(memory, buffer, std::min<std::size_t>(window, to - at), static_cast<off_t>(at));
            for (const Marked &mark : marks) {
                for (const std::size_t width : {std::size_t(1), std::size_t(2)}) {
                    const char *const end = buffer + size - static_cast<ssize_t>(mark.size() * width);
                    for (const char *place = buffer; place < end; ++place) {
                        place = static_cast<const char *>(
                            std::memchr(place, mark.first(), static_cast<std::size_t>(end - place)));
                        if (!place)
                            break;
                        if (mark.isAt(place, width))
                            found += QString::fromUtf8(line).simplified() + u" width %1"_s.arg(width);
                    }
                }
            }
        }
    }
    close(memory);
    munmap(buffer, window);
    return found;
}

class LockTest : public WindowFixture {
protected:
    void switchOn()
    {
        (void)m_app->storage().vault->key();
        // Nobody can be asked here, so the key goes where the switch would put it.
        m_app->storage().vault->moveKey(UserPresence::Required);
        m_app->storage().settings->setAppLockEnabled(true);
        settle();
    }
    [[nodiscard]] AppLockViewModel &lock() { return *m_app->presentation().lock; }
    void unlock()
    {
        click(item(u"unlockButton"_s));
        ASSERT_TRUE(eventually([this] { return !lock().isLocked(); }));
        settle();
    }
    // Of every window of the program, whether it is shown or not.
    [[nodiscard]] static QString everythingSaid()
    {
        QStringList words;
        for (QWindow *window : QGuiApplication::allWindows()) {
            words += window->title();
            collect(QAccessible::queryAccessibleInterface(window), words);
            if (auto *const quick = qobject_cast<QQuickWindow *>(window)) {
                for (QQuickItem *item : WindowDriver::allItems(quick)) {
                    for (const char *property : {"text", "placeholderText", "title"})
                        words += item->property(property).toString();
                }
            }
        }
        return words.join(u'\n');
    }
    static void expectNoSecret()
    {
        const QString said = everythingSaid();
        EXPECT_FALSE(said.contains(u"SECRET"_s)) << said.toStdString();
    }
};

TEST_F(LockTest, LockedWindowSaysNoWordAndComesBackAsItWas)
{
    addChat(u"Ferns SECRETtitle"_s, {u"Which ferns SECRETquestion"_s, u"Many SECRETanswer kinds"_s});
    QStringList longChat;
    for (int i = 0; i < 40; ++i)
        longChat += u"SECRETline %1"_s.arg(i);
    m_app->presentation().chat->open(addChat(u"SECRETlong"_s, longChat));
    switchOn();
    settle();
    type(u"SECRETdraft begun"_s);
    ASSERT_TRUE(settingsWindow());
    m_window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    auto *const list = item(u"messages"_s);
    for (int i = 0; i < 3; ++i)
        press(Qt::Key_PageUp);
    settle();
    const double place = list->property("contentY").toDouble() - list->property("originY").toDouble();
    ASSERT_TRUE(everythingSaid().contains(u"SECRET"_s));

    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(lock().isLocked());
    settle();
    expectNoSecret();
    EXPECT_TRUE(isAt(m_window, u"Unlock"_s));
    for (const int key : {Qt::Key_Tab, Qt::Key_N, Qt::Key_F9})
        press(key, key == Qt::Key_Tab ? Qt::NoModifier : Qt::ControlModifier); // nothing behind it hears
    EXPECT_FALSE(item(u"messages"_s));

    unlock();
    EXPECT_EQ(m_app->presentation().chat->draft(), u"SECRETdraft begun"_s);
    EXPECT_TRUE(everythingSaid().contains(u"SECRETlong"_s)) << "the list of chats";
    auto *const again = item(u"messages"_s);
    ASSERT_TRUE(again);
    EXPECT_TRUE(eventually([&] {
        return std::abs(again->property("contentY").toDouble() - again->property("originY").toDouble() -
                        place) < 60;
    })) << place
        << " " << again->property("contentY").toDouble() - again->property("originY").toDouble();
    m_window->requestActivate(); // the settings came back as well
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    settle();
    EXPECT_TRUE(isAt(m_window, u"Message"_s));
    type(u" more"_s);
    EXPECT_EQ(m_app->presentation().chat->draft(), u"SECRETdraft begun more"_s);
}

TEST_F(LockTest, SettingsAreReachedFromTheCurtainAndSayNothingSealed)
{
    addChat(u"SECRETtitle"_s, {u"SECRETquestion"_s, u"SECRETanswer"_s});
    SettingsStore &settings = *m_app->storage().settings;
    settings.setBaseURLString(u"https://SECRETserver.example/v1"_s);
    settings.setMemoryEnabled(true);
    m_app->assistant().memory->record(u"SECRETnote"_s);
    m_app->assistant().systemPrompts->setPrompt(u"SECRETinstruction"_s);
    NetworkLedger::Entry connection;
    connection.startedAt = m_clock.now();
    connection.host = u"SECREThost.example"_s;
    m_app->assistant().networkLedger->record(connection);
    send(u"SECRETmore"_s);
    leaveProof({.place = {ProofLedger::Place::Kind::network, u"small"_s, u"SECRETproof.example"_s}});
    endReply();
    switchOn();
    auto *open = settingsWindow();
    ASSERT_TRUE(open);
    const QStringList pages = open->property("pages").toStringList();
    ASSERT_GE(pages.size(), 11);
    for (const QString &page : pages) { // all of them have been filled once
        open->setProperty("page", page);
        settle();
    }
    for (const char *secret :
         {"SECRETserver", "SECRETnote", "SECRETinstruction", "SECREThost", "SECRETproof"})
        EXPECT_TRUE(everythingSaid().contains(QLatin1StringView(secret))) << secret;
    lock().lock();
    settle();

    click(item(u"lockedSettings"_s));
    open = settingsWindow();
    ASSERT_TRUE(open);
    EXPECT_EQ(open->property("pages").toStringList(), pages);
    const QStringList sealed{u"ai"_s,     u"instructions"_s, u"abilities"_s,
                             u"memory"_s, u"proof"_s,        u"network"_s};
    for (const QString &page : pages) {
        SCOPED_TRACE(page.toStdString());
        open->setProperty("page", page);
        settle();
        expectNoSecret();
        const auto *const way = WindowDriver::item(open, u"toUnlock"_s);
        EXPECT_EQ(way && way->isVisible(), sealed.contains(page) || page == "privacy"_L1);
        for (const char *name : {"appLock.switch", "setPassphrase", "removePassphrase", "idle.0",
                                 "retention.sevenDays", "replaceIdentifiers", "eraseAll", "deleteCrashes",
                                 "instructions", "clearMemory", "exportLedger", "abilities.enabled.switch"})
            EXPECT_FALSE(WindowDriver::item(open, QString::fromLatin1(name))) << name;
    }
    open->setProperty("page", u"appearance"_s);
    settle();
    click(WindowDriver::item(open, u"textSize.large"_s));
    EXPECT_EQ(settings.chatTextSize(), ChatTextSize::large) << "what isn't sealed is set as ever";
    open->setProperty("page", u"memory"_s);
    settle();
    click(WindowDriver::item(open, u"toUnlock"_s));
    EXPECT_TRUE(eventually([&] { return m_window->isActive() && isAt(m_window, u"Unlock"_s); }));

    ASSERT_TRUE(settingsWindow());
    lock().unlock();
    ASSERT_TRUE(eventually([this] { return !lock().isLocked(); }));
    settle();
    open = settingsWindow();
    ASSERT_TRUE(open);
    EXPECT_EQ(open->property("page").toString(), u"memory"_s);
    EXPECT_TRUE(shows(open, u"SECRETnote"_s)) << "the whole of it, where it was";
}

// Point by point, in light and dark.
TEST_F(LockTest, ALockedWindowLooksLikeOneThatNeverHeldAWord)
{
    const auto pictures = [this] {
        QList<QImage> taken;
        for (const bool isDark : {false, true}) {
            m_app->presentation().shell->setDesktopLook({.isDark = isDark});
            settle();
            taken += m_window->grabWindow();
        }
        return taken;
    };
    load();
    switchOn();
    lock().lock();
    const QList<QImage> empty = pictures();
    EXPECT_NE(empty[0], empty[1]);
    lock().unlock(); // no pointer stays over the button
    ASSERT_TRUE(eventually([this] { return !lock().isLocked(); }));
    settle();
    m_app->presentation().chat->open(addChat(u"SECRETtitle"_s, {u"SECRETquestion"_s, u"SECRETanswer"_s}));
    m_app->presentation().chat->setDraft(u"SECRETdraft"_s);
    settle();
    EXPECT_NE(pictures(), empty);
    lock().lock();
    EXPECT_TRUE(pictures() == empty);
}

TEST_F(LockTest, ATurnEndsWithTheLockAndWhatHadComeAndWhatIsBeingEditedOutlastsIt)
{
    switchOn();
    send(u"Question"_s);
    stream(u"The first half"_s);
    lock().lock();
    EXPECT_TRUE(isAbandoned());
    auto &chat = *m_app->presentation().chat;
    EXPECT_EQ(chat.turnsInFlight(), 0);
    EXPECT_EQ(chat.messages()->rowCount(), 0);
    settle();
    unlock();
    EXPECT_EQ(transcript(), QStringList({u"Question"_s, u"The first half"_s}));

    chat.beginEdit(chat.messages()->index(0).data(MessageListModel::MessageIdRole).toString());
    chat.setDraft(u"Other words"_s);
    lock().lock();
    EXPECT_EQ(chat.draft(), QString());
    settle();
    unlock();
    EXPECT_TRUE(chat.isEditing());
    EXPECT_EQ(chat.draft(), u"Other words"_s);
}

TEST_F(LockTest, AStartWithTheLockOnReadsNothingBeforeItIsOpened)
{
    addChat(u"Ferns"_s, {u"Which?"_s, u"Many."_s});
    switchOn();
    start();
    load();
    EXPECT_TRUE(m_app->storage().vault->isLocked());
    EXPECT_FALSE(item(u"messages"_s));
    EXPECT_FALSE(m_app->presentation().chat->conversation());
    EXPECT_EQ(everythingSaid().indexOf(u"Ferns"_s), -1);
    unlock();
    EXPECT_TRUE(shows(u"Ferns"_s));
    ASSERT_TRUE(m_app->presentation().chat->conversation());
    send(u"More"_s);
    endReply();
    EXPECT_FALSE(transcript().isEmpty());
}

// From the settings to the next start: the one who knows it gets in, and whoever forgot it can only erase.
TEST_F(LockTest, APassphraseIsSetInTheSettingsAndOpensTheNextStart)
{
    const Marked passphrase = Marked::made();
    addChat(u"SECRETtitle"_s, {u"SECRETquestion"_s, u"SECRETanswer"_s});
    load();
    auto *const page = settingsWindow();
    ASSERT_TRUE(page);
    page->setProperty("page", u"privacy"_s);
    settle();
    const auto control = [&](const QString &name) { return WindowDriver::item(page, name); };
    const auto fill = [&](const QString &name, const QString &text) {
        control(name)->forceActiveFocus();
        WindowDriver::type(page, text);
        settle();
    };
    click(control(u"setPassphrase"_s));
    settle();
    fill(u"chosenPassphrase"_s, passphrase.text());
    QStringList said;
    collect(QAccessible::queryAccessibleInterface(page), said);
    EXPECT_FALSE(said.join(u'\n').contains(passphrase.text())) << "a screen reader spells it";
    fill(u"repeatedPassphrase"_s, u"other words"_s);
    click(control(u"confirmPassphrase"_s));
    EXPECT_TRUE(shows(page, u"The two fields held different passphrases. Type both again."_s));
    fill(u"chosenPassphrase"_s, passphrase.text());
    fill(u"repeatedPassphrase"_s, passphrase.text());
    click(control(u"confirmPassphrase"_s));
    ASSERT_TRUE(eventually([&] { return lock().hasPassphrase(); }));
    settle();
    EXPECT_FALSE(control(u"chosenPassphrase"_s));
    EXPECT_TRUE(lock().isEnabled());
    std::vector<Marked> secrets{passphrase};
    {
        const SecretBytes key = m_app->storage().vault->key();
        secrets.emplace_back(QByteArray(reinterpret_cast<const char *>(key.data()), 32));
        secrets.emplace_back(DataKey::print(key));
    }
    lock().lock();
    settle();
    if (!ProcessMemory::isInstrumented()) {
        const QStringList left = foundInMemory(secrets);
        EXPECT_TRUE(left.isEmpty()) << left.join(u'\n').toStdString();
    }

    m_isKeyWrapped = true;
    m_app->storage().settings->setAppLockEnabled(false); // a lost setting opens nothing
    start();
    load();
    expectNoSecret();
    EXPECT_FALSE(item(u"unlockButton"_s)->isEnabled()) << "nothing to try";
    click(item(u"forgotPassphrase"_s));
    settle();
    const QSignalSpy erasure(m_app->presentation().privacy.get(), &PrivacyViewModel::erasureConfirmed);
    click(item(u"eraseAll"_s));
    type(m_app->presentation().privacy->confirmation());
    click(item(u"confirmErasure"_s));
    EXPECT_EQ(erasure.count(), 1);
    press(Qt::Key_Escape); // back to the lock
    settle();
    type(u"wrong words"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return lock().unlockMessage().startsWith(u"That is not"_s); }));
    m_clock.advance(std::chrono::seconds(1));
    settle();
    type(passphrase.text());
    press(Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return !lock().isLocked(); }));
    settle();
    EXPECT_TRUE(shows(u"SECRETtitle"_s));
    EXPECT_TRUE(ProcessMemory::isInstrumented() || foundInMemory({passphrase}).isEmpty())
        << "typed, tried and gone";
}

// The keychain of this test stands in this very process, so what it holds goes first.
TEST_F(LockTest, LockedMemoryHoldsNeitherKeyNorWords)
{
    if (ProcessMemory::isInstrumented())
        GTEST_SKIP() << "a sanitizer's heap keeps what is freed";
    const std::vector marks{Marked::made(), Marked::made(), Marked::made(), Marked::made()};
    switchOn();
    std::vector<Marked> keys;
    {
        const SecretBytes key = m_app->storage().vault->key();
        keys.emplace_back(QByteArray(reinterpret_cast<const char *>(key.data()), 32));
        keys.emplace_back(DataKey::print(key));
    }
    const auto words = [&](std::size_t mark) { return u"Of "_s + marks[mark].text() + u" and more"_s; };
    m_app->storage().settings->setMemoryEnabled(true);
    m_app->assistant().memory->record(words(0));
    m_app->assistant().systemPrompts->setPrompt(words(1));
    showReply(u"# "_s + words(0) + u"\n\n| a | b |\n|---|---|\n| "_s + words(0) + u" | 2 |\n\n```\n"_s +
              words(0) + u"\n```\n"_s);
    send(words(1));
    stream(words(2));
    settle();
    type(words(3));
    press(Qt::Key_F, Qt::ControlModifier);
    type(marks[0].text());
    settle();
    EXPECT_GE(foundInMemory(marks).size(), 4) << "the search sees what is there";

    press(Qt::Key_L, Qt::ControlModifier);
    settle();
    m_keychain.remove(LocalDataVault::keyAccount);
    settle();
    const QStringList wordsLeft = foundInMemory(marks);
    EXPECT_TRUE(wordsLeft.isEmpty()) << wordsLeft.join(u'\n').toStdString();
    const QStringList keysLeft = foundInMemory(keys);
    EXPECT_TRUE(keysLeft.isEmpty()) << keysLeft.size() << " such as " << keysLeft.value(0).toStdString();
}

TEST_F(LockTest, NotesInstructionsAndAnAttachmentAreBackAfterTheLockAndNotThereDuringIt)
{
    switchOn();
    load();
    auto &memory = *m_app->assistant().memory;
    auto &prompts = *m_app->assistant().systemPrompts;
    auto &desk = *m_app->presentation().chat->entries()->attachments();
    memory.record(u"a note"_s);
    prompts.setPrompt(u"be brief"_s);
    const auto attach = [&](const std::optional<QByteArray> &picture) {
        desk.hold({.id = QUuid::createUuid(),
                   .filename = u"plan.txt"_s,
                   .fileExtension = u"txt"_s,
                   .fileSizeBytes = 4,
                   .text = picture ? QString() : u"plan"_s,
                   .imageData = picture});
    };
    for (const auto &picture : {std::optional<QByteArray>(), std::optional(QByteArray("\x00\xff jpeg", 7))}) {
        attach(picture);
        lock().lock();
        EXPECT_TRUE(memory.facts().empty() && prompts.prompt().isEmpty() && !desk.pending());
        EXPECT_EQ(memory.remember(u"dropped"_s), std::nullopt);
        settle();
        unlock();
        ASSERT_EQ(memory.facts().size(), 1U);
        EXPECT_EQ(memory.facts()[0].text, u"a note"_s);
        EXPECT_EQ(prompts.prompt(), u"be brief"_s);
        ASSERT_TRUE(desk.pending());
        EXPECT_EQ(desk.pending()->filename, u"plan.txt"_s);
        EXPECT_EQ(desk.pending()->text, picture ? QString() : u"plan"_s);
        EXPECT_EQ(desk.pending()->imageData, picture);
    }
    EXPECT_TRUE(memory.record(u"another"_s));
}

TEST_F(LockTest, WhatWasStillBeingReadIsReadAgainAfterTheLock)
{
    switchOn();
    load();
    auto &desk = *m_app->presentation().chat->entries()->attachments();
    const QString path = m_profile.filePath(u"SECRETplan.txt"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("SECRETplan") == 10);
    file.close();
    desk.attach({QUrl::fromLocalFile(m_profile.filePath(u"SECRETgone.txt"_s)), QUrl::fromLocalFile(path)});
    ASSERT_TRUE(desk.isReading());
    lock().lock();
    settle();
    EXPECT_FALSE(desk.isReading() || desk.pending());
    expectNoSecret();
    EXPECT_TRUE(desk.unread().isEmpty());
    unlock();
    ASSERT_TRUE(eventually([&] { return desk.pending() && !desk.isReading(); }));
    EXPECT_EQ(desk.pending()->text, u"SECRETplan"_s);
    desk.clear();
    lock().lock();
    unlock();
    EXPECT_FALSE(desk.isReading() || desk.pending()) << "once is enough";
}

} // namespace

} // namespace morvane
