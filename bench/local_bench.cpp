// What stands between a press and a local model that answers: proving a fetched archive, finding a server,
// and showing how far a pull is while the window goes on.

#include "ai/local/FileDigest.h"
#include "ai/local/LocalServer.h"
#include "ai/local/ModelPull.h"
#include "ai/local/TransferFigures.h"
#include "async/Clock.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ScriptedServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int pullLines = 50'000;

const QString &archive()
{
    static const QTemporaryDir folder;
    static const QString path = [] {
        QFile file(folder.filePath(u"archive"_s));
        file.open(QIODevice::WriteOnly);
        const QByteArray mebibyte(1 << 20, 'a');
        for (int i = 0; i < 1024; ++i)
            file.write(mebibyte);
        return file.fileName();
    }();
    return path;
}

// Wall time of `work`, in which another process may take part.
void report(benchmark::State &state, const std::function<void()> &work)
{
    QElapsedTimer since;
    since.start();
    for (auto _ : state)
        work();
    state.counters["value"] =
        static_cast<double>(since.nsecsElapsed()) / 1e6 / static_cast<double>(state.iterations());
    state.SetLabel("ms");
}

void archiveHash(benchmark::State &state)
{
    archive();
    report(state, [] { benchmark::DoNotOptimize(FileDigest::sha256(archive(), {})); });
}
BENCHMARK(archiveHash)->Name("archive_hash_1_GiB")->Iterations(1);

void archiveHashByProgram(benchmark::State &state)
{
    archive();
    report(state, [&] {
        QProcess program;
        program.start(u"sha256sum"_s, {archive()});
        if (!program.waitForFinished(-1) || program.exitCode() != 0)
            state.SkipWithError("sha256sum failed");
    });
}
BENCHMARK(archiveHashByProgram)->Name("archive_hash_1_GiB/yardstick")->Iterations(1);

template <typename T>
QCoro::Task<> finish(QCoro::Task<T> task, bool *isDone)
{
    co_await std::move(task);
    *isDone = true;
}

template <typename T>
void await(QCoro::Task<T> task)
{
    bool isDone = false;
    finish<T>(std::move(task), &isDone);
    while (!isDone)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
}

void probe(benchmark::State &state)
{
    SystemClock clock;
    NetworkLedger ledger;
    AppNetwork network(ledger, clock);
    ScriptedServer server(ScriptedServer::answering(
        ScriptedServer::response("200 OK", R"({"models":[{"name":"llama3.2:3b","digest":"1","size":5}]})")));
    const LocalServer asked{&network, server.url(QString())};
    report(state, [&] { await(LocalServer::models(asked, {})); });
}
BENCHMARK(probe)->Name("local_probe_to_found");

// The longest time in which nothing else came to its turn on the GUI thread.
void pullOfManyLines(benchmark::State &state)
{
    QByteArray body;
    for (int i = 0; i < pullLines; ++i)
        body +=
            R"({"status":"pulling 6a0746a1ec1a","digest":"sha256:6a0746a1ec1a","total":50000,"completed":)" +
            QByteArray::number(i) + "}\n";
    body += R"({"status":"success"})";
    SystemClock clock;
    NetworkLedger ledger;
    AppNetwork network(ledger, clock);
    ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", body)));
    const LocalServer asked{&network, server.url(QString())};
    qint64 longest = 0; // nanoseconds
    for (auto _ : state) {
        TransferMeter meter;
        QElapsedTimer since;
        since.start();
        QTimer tick;
        QObject::connect(&tick, &QTimer::timeout, &tick, [&] {
            longest = std::max(longest, since.nsecsElapsed());
            since.restart();
        });
        tick.start(0);
        ModelPull::OnProgress onProgress = [&](const ModelPull::Progress &one) {
            benchmark::DoNotOptimize(meter.note(one.done, one.total, clock.elapsed()));
        };
        await(ModelPull::run(asked, u"m"_s, std::move(onProgress), &clock, {}));
    }
    state.counters["value"] = static_cast<double>(longest) / 1e6;
    state.SetLabel("ms");
}
BENCHMARK(pullOfManyLines)->Name("longest_block_of_a_pull_of_50000_lines")->Iterations(1);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"*=false"_s);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
