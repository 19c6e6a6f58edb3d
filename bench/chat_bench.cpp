#include "BareWindow.h"
#include "LongestBlock.h"
#include "OpenWindow.h"
#include "app/AppState.h"
#include "app/MainWindowController.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "support/ModelServer.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/find/FindViewModel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QQuickItem>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <ctime>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

// A reply of 2,000 pieces streams into a chat of 1,000 messages that is open in the window.
void streamIntoLongChat(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        const QTemporaryDir profile;
        SystemClock clock;
        InMemoryKeychainService keychain;
        ModelServer server;
        CommandLine commandLine;
        commandLine.profile = profile.path();
        Work work(clock);
        AppState application(commandLine, Host::test, clock, {keychain, keychain}, work);
        application.storage().settings->setBaseURLString(server.baseUrl());
        application.storage().settings->setModel(u"pieces-2000"_s);
        fill(*application.storage().repository, *application.presentation().chat->conversation(), clock,
             1000);
        const QString id = application.presentation().chat->conversationId();
        application.presentation().chat->newConversation();
        application.presentation().chat->open(id);
        MainWindowController window(application.presentation());
        window.show();
        application.start();
        const auto turn = [&](auto &&done) {
            while (!done())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        };
        QElapsedTimer shown;
        shown.start();
        turn([&] { return shown.elapsed() > 1000; });
        application.presentation().chat->sendMessage(u"Go"_s, std::nullopt);
        LongestBlock block;
        turn([&] { return !application.presentation().chat->isResponding(); });
        report(state, block.milliseconds(), "ms");
        block.end();
        application.willTerminate();
    }
}

double residentMebibytes()
{
    QFile statm(u"/proc/self/statm"_s);
    const bool isOpen = statm.open(QIODevice::ReadOnly);
    return isOpen ? statm.readAll().split(' ').value(1).toDouble() * 4096 / (1024 * 1024) : 0;
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Scrolls a list from its end a third of a view at a time. The longest step of laying out and drawing, in
// milliseconds.
double longestScrollStep(QQuickItem *list)
{
    double longest = 0;
    for (int step = 0; step < 400; ++step) {
        const double top = list->property("contentY").toDouble();
        QElapsedTimer frame;
        frame.start();
        list->setProperty("contentY", top - list->height() / 3);
        QCoreApplication::processEvents();
        longest = std::max(longest, static_cast<double>(frame.nsecsElapsed()) / 1e6);
    }
    return longest;
}

// A chat of 1,000 rich answers, and what it added to memory.
void scrollRichAnswers(benchmark::State &state, bool wantsMemory)
{
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        const double before = residentMebibytes();
        open.openFilled(2000, richAnswer);
        const double longest = longestScrollStep(open.messages());
        if (wantsMemory)
            report(state, residentMebibytes() - before, "MiB");
        else
            report(state, longest, "ms");
    }
}

void scrollPlainTexts(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        const BareWindow window = BareWindow::listOf(2000, richAnswer);
        OpenWindow::turnFor(500);
        report(state, longestScrollStep(window.subject()), "ms");
    }
}

// The processor time that four seconds take, in percent of one core.
double processorShare()
{
    const double before = processorSeconds();
    QElapsedTimer wall;
    wall.start();
    while (wall.elapsed() < 4000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return (processorSeconds() - before) / (static_cast<double>(wall.nsecsElapsed()) / 1e9) * 100;
}

// The pieces that the practice server writes.
QString piece(int number)
{
    return number % 12 == 0 ? u"piece %1.\n"_s.arg(number) : u"piece %1, "_s.arg(number);
}

void processorOfPlainText(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        const BareWindow window = BareWindow::text();
        OpenWindow::turnFor(500);
        int number = 0;
        QTimer pace;
        QObject::connect(&pace, &QTimer::timeout, [&] { window.append(piece(++number)); });
        pace.start(std::chrono::milliseconds(20));
        OpenWindow::turnFor(1000);
        report(state, processorShare(), "%");
    }
}

// The pieces come as fast as they are shown, one in each turn of the event loop.
void streamIntoPlainText(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        const BareWindow window = BareWindow::text();
        OpenWindow::turnFor(500);
        LongestBlock block;
        for (int number = 1; number <= 2000; ++number) {
            window.append(piece(number));
            QCoreApplication::processEvents();
        }
        report(state, block.milliseconds(), "ms");
        block.end();
    }
}

// While a reply of that scenario streams in at fifty pieces a second.
void processorWhileStreaming(benchmark::State &state, const char *scenario)
{
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        open.state().storage().settings->setModel(QString::fromLatin1(scenario));
        open.state().presentation().chat->sendMessage(u"Go"_s, std::nullopt);
        OpenWindow::turnFor(1000);
        report(state, processorShare(), "%");
        open.state().presentation().chat->stopResponding();
        OpenWindow::turnFor(200);
    }
}

// The longest block of the GUI thread while words are typed and found in a chat of 2,000 messages, and while
// the finds are gone through.
void findInLongChat(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        OpenWindow open;
        open.openFilled(2000, richAnswer);
        FindViewModel &find = *open.state().presentation().find;
        const auto search = [&find](const QString &words) {
            find.setQuery(words);
            while (find.isSearching())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        };
        find.open(0);
        OpenWindow::turnFor(500);
        LongestBlock block;
        for (const auto &words : {u"s"_s, u"strong"_s, u"strong w"_s})
            search(words);
        const double searching = block.milliseconds();
        for (int i = 0; i < 50; ++i) {
            find.next();
            OpenWindow::turnFor(20);
        }
        state.counters["stepping"] = block.milliseconds();
        report(state, searching, "ms");
        block.end();
        if (find.count() != 1000) // in the answers; the person's marks are no words
            state.SkipWithError("not all was found");
    }
}

} // namespace

BENCHMARK(findInLongChat)->Name("longest_block_of_a_search_in_2000_messages")->Iterations(1);
BENCHMARK_CAPTURE(scrollRichAnswers, frame, false)
    ->Name("longest_scroll_step_1000_rich_answers")
    ->Iterations(1);
BENCHMARK(scrollPlainTexts)->Name("longest_scroll_step_1000_rich_answers/yardstick")->Iterations(1);
BENCHMARK_CAPTURE(scrollRichAnswers, memory, true)->Name("memory_of_1000_rich_answers")->Iterations(1);
BENCHMARK_CAPTURE(processorWhileStreaming, lines, "paced-400")
    ->Name("processor_at_50_pieces_a_second")
    ->Iterations(1);
BENCHMARK_CAPTURE(processorWhileStreaming, paragraph, "one-paragraph-18500")
    ->Name("processor_in_a_paragraph_of_20000_characters")
    ->Iterations(1);
BENCHMARK_CAPTURE(processorWhileStreaming, mixed, "mixed-answer-400")
    ->Name("processor_in_a_mixed_answer")
    ->Iterations(1);
BENCHMARK_CAPTURE(processorWhileStreaming, code, "code-400")
    ->Name("processor_in_streamed_code")
    ->Iterations(1);
BENCHMARK(processorOfPlainText)->Name("processor_at_50_pieces_a_second/yardstick")->Iterations(1);
BENCHMARK(streamIntoLongChat)->Name("longest_block_while_streaming")->Iterations(1);
BENCHMARK(streamIntoPlainText)->Name("longest_block_while_streaming/yardstick")->Iterations(1);

int main(int argc, char **argv)
{
    return runOffScreen(argc, argv);
}
