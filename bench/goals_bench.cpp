// What a person waits for in the window.

#include "OpenWindow.h"
#include "models/Conversation.h"
#include "security/LocalDataVault.h"
#include "view_models/settings/AppLockViewModel.h"

#include <QKeyEvent>

#include <algorithm>
#include <functional>
#include <vector>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

QQuickItem *find(QQuickItem *within, const QString &name)
{
    if (within->objectName() == name)
        return within;
    for (QQuickItem *child : within->childItems()) {
        if (QQuickItem *found = find(child, name))
            return found;
    }
    return nullptr;
}

// From an act to the first frame that was drawn once it had its effect, in milliseconds.
double untilSeen(QQuickWindow &window, const std::function<void()> &act,
                 const std::function<bool()> &hasEffect)
{
    bool isDrawn = false;
    const auto frame =
        QObject::connect(&window, &QQuickWindow::frameSwapped, [&] { isDrawn = isDrawn || hasEffect(); });
    QElapsedTimer timer;
    timer.start();
    act();
    while (!isDrawn && timer.elapsed() < 2'000)
        QCoreApplication::processEvents();
    QObject::disconnect(frame);
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void press(QQuickWindow &window, int key, const QString &text = {})
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&window, &event);
    }
}

// The middle one; the longest stands beside it.
void reportMiddle(benchmark::State &state, std::vector<double> times)
{
    std::ranges::sort(times);
    state.counters["longest"] = times.back();
    report(state, times[times.size() / 2], "ms");
}

// Letters into the message, below a chat of 1,000 rich answers.
void keyToScreen(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        open.openFilled(1000, richAnswer);
        QQuickItem *composer = open.item(u"composer"_s);
        composer->forceActiveFocus();
        std::vector<double> times;
        for (int i = 0; i < 101; ++i) {
            const auto isWritten = [&] { return composer->property("length").toInt() > i; };
            times.push_back(untilSeen(
                *open.window(), [&] { press(*open.window(), Qt::Key_A, u"a"_s); }, isWritten));
            OpenWindow::turnFor(20);
        }
        reportMiddle(state, std::move(times));
    }
}

// Esc while a reply streams, until the button says Send again.
void stopToSeen(benchmark::State &state)
{
    std::vector<double> times;
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        open.state().storage().settings->setModel(u"paced-400"_s);
        for (int i = 0; i < 5; ++i) {
            open.state().presentation().chat->sendMessage(u"Go"_s, std::nullopt);
            OpenWindow::turnFor(700);
            const QQuickItem *button = open.item(u"sendOrStop"_s);
            if (!button->property("responding").toBool())
                state.SkipWithError("no reply to stop");
            times.push_back(untilSeen(
                *open.window(), [&] { press(*open.window(), Qt::Key_Escape); },
                [&] { return !button->property("responding").toBool(); }));
            OpenWindow::turnFor(200);
        }
        reportMiddle(state, times);
    }
}

void openLongChat(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        const QString id = open.openFilled(1000, richAnswer);
        ChatViewModel &chat = *open.state().presentation().chat;
        std::vector<double> times;
        for (int i = 0; i < 3; ++i) {
            chat.newConversation();
            OpenWindow::turnFor(300);
            const auto isThere = [&] {
                const QQuickItem *list = open.messages();
                return list && list->isVisible() && list->property("count").toInt() == 1000;
            };
            times.push_back(untilSeen(
                *open.window(), [&] { chat.open(id); }, isThere));
        }
        reportMiddle(state, std::move(times));
    }
}

void polish(QQuickItem &item)
{
    item.ensurePolished();
    for (QQuickItem *child : item.childItems())
        polish(*child);
}

// A flush of sixteen characters into a paragraph at the end of an answer of many blocks.
void layOutLastBlock(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        open.openFilled(2, richAnswer);
        QQuickItem *parts = find(open.window()->contentItem(), u"replyBlocks"_s);
        QQuickItem *blocks = parts ? parts->parentItem() : nullptr;
        if (!blocks) {
            state.SkipWithError("no reply is drawn");
            break;
        }
        QString text = richAnswer.repeated(20) + u'\n';
        blocks->setProperty("finished", false);
        blocks->setProperty("text", text);
        OpenWindow::turnFor(500);
        std::vector<double> times;
        for (int i = 0; i < 125; ++i) {
            text += u"words that came, "_s;
            QElapsedTimer timer;
            timer.start();
            blocks->setProperty("text", text);
            polish(*parts);
            times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            OpenWindow::turnFor(10);
        }
        reportMiddle(state, std::move(times));
    }
}

// The key goes where the switch in the settings would put it; nobody can be asked here.
AppLockViewModel &switchedOn(OpenWindow &open)
{
    const Storage &storage = open.state().storage();
    static_cast<void>(storage.vault->key());
    storage.vault->moveKey(UserPresence::Required);
    storage.settings->setAppLockEnabled(true);
    OpenWindow::turnFor(500);
    return *open.state().presentation().lock;
}

struct LockTimes {
    std::vector<double> toCurtain;
    std::vector<double> toList;
};

// Locks from an open chat of 100 rich answers, and opens again, on a store of so many chats.
LockTimes lockAndUnlock(int chats, int times)
{
    OpenWindow open;
    ConversationRepository &repository = *open.state().storage().repository;
    for (int i = 0; i < chats; ++i) {
        const auto chat =
            Conversation::create(repository.context().sealing(), {QUuid::createUuid(), u"Chat %1"_s.arg(i)});
        repository.context().insert(chat);
        fill(repository, *chat, open.clock(), 2);
    }
    open.openFilled(100, richAnswer);
    AppLockViewModel &lock = switchedOn(open);
    LockTimes measured;
    for (int i = 0; i < times; ++i) {
        measured.toCurtain.push_back(untilSeen(
            *open.window(), [&] { lock.lock(); },
            [&] {
                const QQuickItem *button = find(open.window()->contentItem(), u"unlockButton"_s);
                return button && button->isVisible() && !find(open.window()->contentItem(), u"messages"_s);
            }));
        OpenWindow::turnFor(300);
        measured.toList.push_back(untilSeen(
            *open.window(), [&] { lock.unlock(); },
            [&] {
                const QQuickItem *list = find(open.window()->contentItem(), u"conversations"_s);
                return list && list->isVisible() &&
                       list->property("count").toInt() > 10; // it fetches the rest by and by
            }));
        OpenWindow::turnFor(300);
    }
    return measured;
}

void lockToCurtain(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        std::vector<double> times = lockAndUnlock(10, 15).toCurtain;
        state.counters["first"] = times.front();
        reportMiddle(state, std::move(times));
    }
}

void unlockTenThousandChats(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state)
        reportMiddle(state, lockAndUnlock(10'000, 5).toList);
}

} // namespace

BENCHMARK(lockToCurtain)->Name("lock_to_curtain")->Iterations(1);
BENCHMARK(unlockTenThousandChats)->Name("unlock_10000_chats")->Iterations(1);
BENCHMARK(keyToScreen)->Name("key_to_screen")->Iterations(1);
BENCHMARK(stopToSeen)->Name("stop_to_seen")->Iterations(1);
BENCHMARK(openLongChat)->Name("open_chat_of_1000_messages")->Iterations(1);
BENCHMARK(layOutLastBlock)->Name("last_block_laid_out")->Iterations(1);

int main(int argc, char **argv)
{
    return runOffScreen(argc, argv);
}
