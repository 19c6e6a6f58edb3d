#include "app/AppState.h"
#include "app/MainWindowController.h"
#include "app/SecretKeeping.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "support/ModelServer.h"
#include "utils/Clock.h"
#include "view_models/ChatViewModel.h"
#include "view_models/HistorySearchModel.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QQuickStyle>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

struct Start {
    double milliseconds = 0; // from the start of the process to its first frame and end
    double mebibytes = 0;    // resident at the first frame
};

Start startOf(const QString &program, const QStringList &arguments)
{
    QElapsedTimer timer;
    timer.start();
    QProcess process;
    process.start(program, arguments);
    process.waitForReadyRead(20'000);
    const double elapsed = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    const double bytes = process.readAllStandardOutput().trimmed().toDouble();
    process.waitForFinished(5'000);
    return {elapsed, bytes / (1024 * 1024)};
}

Start applicationStart()
{
    static const QTemporaryDir profile;
    return startOf(QStringLiteral(MORVANE_APPLICATION_START), {profile.path()});
}

Start minimalStart()
{
    return startOf(QStringLiteral(MORVANE_MINIMAL_START), {});
}

void report(benchmark::State &state, double value, const char *unit)
{
    state.counters["value"] = value;
    state.SetLabel(unit);
}

void startTime(benchmark::State &state, Start (*start)())
{
    double sum = 0;
    for ([[maybe_unused]] auto iteration : state)
        sum += start().milliseconds;
    report(state, sum / static_cast<double>(state.iterations()), "ms");
}

void startMemory(benchmark::State &state, Start (*start)())
{
    double sum = 0;
    for ([[maybe_unused]] auto iteration : state)
        sum += start().mebibytes;
    report(state, sum / static_cast<double>(state.iterations()), "MiB");
}

// The longest time that a call posted from another thread waited for the GUI thread to get round to it. The
// next call is posted a millisecond after the one before was answered.
class LongestBlock {
public:
    LongestBlock()
        : m_thread([this](const std::stop_token &stop) { beat(stop); })
    {}

    [[nodiscard]] double milliseconds() const { return static_cast<double>(m_longest.load()) / 1e6; }

private:
    void beat(const std::stop_token &stop)
    {
        while (!stop.stop_requested()) {
            QElapsedTimer posted;
            posted.start();
            std::atomic_bool answered = false;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [&answered] {
                    answered = true;
                    answered.notify_one();
                },
                Qt::QueuedConnection);
            answered.wait(false);
            m_longest = std::max(m_longest.load(), posted.nsecsElapsed());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::atomic<qint64> m_longest = 0; // nanoseconds
    std::jthread m_thread;
};

void fill(ConversationRepository &repository, Conversation &conversation, Clock &clock, int messages)
{
    for (int i = 0; i < messages; ++i) {
        conversation.append(
            repository.makeMessage({.id = QUuid::createUuid(),
                                    .role = i % 2 ? MessageRole::assistant : MessageRole::user,
                                    .content = u"Message number %1, a line of chat."_s.arg(i),
                                    .createdAt = clock.now(),
                                    .status = MessageStatus::delivered}));
        repository.context().insert(conversation.messages().back());
    }
    repository.save();
}

// A profile that holds so many chats of twenty messages each.
class ProfileOfChats {
public:
    explicit ProfileOfChats(int chats)
        : m_secrets(commandLine().folders(), SecretKeeping::Keyring::none)
    {
        bool isOpen = false;
        m_opening = TaskHandle::start([&](const std::stop_token &stop) { return open(stop, &isOpen); });
        while (!isOpen)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const auto application = start();
        ConversationRepository &repository = application->repository();
        for (int i = 0; i < chats; ++i) {
            const auto chat = Conversation::create(repository.context().sealing(),
                                                   {QUuid::createUuid(), u"Chat %1"_s.arg(i), m_clock.now()});
            repository.context().insert(chat);
            fill(repository, *chat, m_clock, 20);
        }
        application->willTerminate();
    }

    [[nodiscard]] std::unique_ptr<AppState> start()
    {
        return std::make_unique<AppState>(commandLine(), AppState::Host::test, m_clock,
                                          AppState::Secrets{m_secrets.keychain(), m_secrets.keychain()});
    }
    [[nodiscard]] QString path() const { return m_folder.path(); }

private:
    [[nodiscard]] CommandLine commandLine() const
    {
        CommandLine line;
        line.profile = m_folder.path();
        return line;
    }
    QCoro::Task<> open(std::stop_token stop, bool *isOpen)
    {
        co_await m_secrets.preparation().prepare(KeyExpectation::Unknown, stop);
        *isOpen = true;
    }

    QTemporaryDir m_folder;
    SystemClock m_clock;
    SecretKeeping m_secrets;
    TaskHandle m_opening;
};

ProfileOfChats &tenChats()
{
    static ProfileOfChats profile(10);
    return profile;
}

ProfileOfChats &tenThousandChats()
{
    static ProfileOfChats profile(10'000);
    return profile;
}

Start startWithTenChats()
{
    return startOf(QStringLiteral(MORVANE_APPLICATION_START), {tenChats().path()});
}

Start startWithTenThousandChats()
{
    return startOf(QStringLiteral(MORVANE_APPLICATION_START), {tenThousandChats().path()});
}

// From the last key to the last find among 200,000 messages, the pause for typing included.
void searchEverything(benchmark::State &state)
{
    const auto application = tenThousandChats().start();
    for ([[maybe_unused]] auto iteration : state) {
        QElapsedTimer timer;
        timer.start();
        application->search().setQuery(u"absent %1"_s.arg(timer.msecsSinceReference()));
        while (application->search().isSearching())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        report(state, static_cast<double>(timer.nsecsElapsed()) / 1e6, "ms");
    }
    application->willTerminate();
}

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
        AppState application(commandLine, AppState::Host::test, clock, {keychain, keychain});
        application.settings().setBaseURLString(server.baseUrl());
        application.settings().setModel(u"pieces-2000"_s);
        fill(application.repository(), *application.chat().conversation(), clock, 1000);
        const QString id = application.chat().conversationId();
        application.chat().newConversation();
        application.chat().open(id);
        MainWindowController window(application);
        application.start();
        const auto turn = [&](auto &&done) {
            while (!done())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        };
        QElapsedTimer shown;
        shown.start();
        turn([&] { return shown.elapsed() > 1000; });
        application.chat().sendMessage(u"Go"_s, std::nullopt);
        auto block = std::make_unique<LongestBlock>();
        turn([&] { return !application.chat().isResponding(); });
        report(state, block->milliseconds(), "ms");
        // Its thread may be waiting for one more answer.
        std::atomic_bool ended = false;
        std::thread ending([&] {
            block.reset();
            ended = true;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [] {}, Qt::QueuedConnection);
        });
        turn([&] { return ended.load(); });
        ending.join();
        application.willTerminate();
    }
}

} // namespace

BENCHMARK_CAPTURE(startTime, application, applicationStart)->Name("start_to_first_frame")->Iterations(3);
BENCHMARK_CAPTURE(startTime, minimal, minimalStart)->Name("start_to_first_frame/yardstick")->Iterations(3);
BENCHMARK_CAPTURE(startMemory, application, applicationStart)->Name("resident_at_first_frame")->Iterations(3);
BENCHMARK_CAPTURE(startMemory, minimal, minimalStart)
    ->Name("resident_at_first_frame/yardstick")
    ->Iterations(3);
BENCHMARK_CAPTURE(startTime, many, startWithTenThousandChats)->Name("start_on_10000_chats")->Iterations(3);
BENCHMARK_CAPTURE(startTime, few, startWithTenChats)->Name("start_on_10000_chats/yardstick")->Iterations(3);
BENCHMARK_CAPTURE(startMemory, many, startWithTenThousandChats)
    ->Name("resident_on_10000_chats")
    ->Iterations(3);
BENCHMARK_CAPTURE(startMemory, few, startWithTenChats)
    ->Name("resident_on_10000_chats/yardstick")
    ->Iterations(3);
BENCHMARK(searchEverything)->Name("search_200000_messages")->Iterations(1);
BENCHMARK(streamIntoLongChat)->Name("longest_block_while_streaming")->Iterations(1);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_LOGGING_RULES", "*.info=false");
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
