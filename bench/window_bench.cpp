#include "WindowFigures.h"
#include "app/AppState.h"
#include "app/SecretKeeping.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "view_models/sidebar/HistorySearchModel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace morvane;
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

// A profile that holds so many chats of twenty messages each.
class ProfileOfChats {
public:
    // The application as one process runs it.
    struct Run {
        Run(const CommandLine &commandLine, Clock &clock, const Secrets &secrets)
            : work(clock)
            , state(commandLine, Host::test, clock, secrets, work)
        {}
        Work work;
        AppState state;
    };

    explicit ProfileOfChats(int chats)
        : m_secrets(commandLine().folders(), std::make_unique<AbsentKeyring>(), m_work)
    {
        bool isOpen = false;
        m_opening = TaskHandle::start([&](const std::stop_token &stop) { return open(stop, &isOpen); });
        while (!isOpen)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const auto application = start();
        ConversationRepository &repository = *application->state.storage().repository;
        for (int i = 0; i < chats; ++i) {
            const auto chat = Conversation::create(repository.context().sealing(),
                                                   {QUuid::createUuid(), u"Chat %1"_s.arg(i), m_clock.now()});
            repository.context().insert(chat);
            fill(repository, *chat, m_clock, 20);
        }
        // As once the store has been read through: else all of it stays in the log.
        repository.context().setWriting(Database::Writing::ToFile);
        application->state.willTerminate();
    }

    [[nodiscard]] std::unique_ptr<Run> start()
    {
        return std::make_unique<Run>(commandLine(), m_clock,
                                     Secrets{m_secrets.keychain(), m_secrets.keychain()});
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
    Work m_work{m_clock};
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
    HistorySearchModel &search = *application->state.presentation().search;
    for ([[maybe_unused]] auto iteration : state) {
        QElapsedTimer timer;
        timer.start();
        search.setQuery(u"absent %1"_s.arg(timer.msecsSinceReference()));
        while (search.isSearching())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        report(state, static_cast<double>(timer.nsecsElapsed()) / 1e6, "ms");
    }
    application->state.willTerminate();
}

} // namespace

BENCHMARK_CAPTURE(startTime, goal, applicationStart)->Name("window_after_start")->Iterations(3);
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

int main(int argc, char **argv)
{
    return runOffScreen(argc, argv);
}
