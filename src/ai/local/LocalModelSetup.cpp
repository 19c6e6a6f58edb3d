// The steps from a machine with nothing to a model that answers.

#include "ai/local/LocalModelService.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/ModelLadder.h"
#include "ai/local/ModelPull.h"
#include "ai/local/RuntimeDownload.h"
#include "ai/local/RuntimeProcess.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "network/TransportError.h"
#include "persistence/SettingsStore.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"

#include <QFile>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = LocalModelService::Phase::Kind;

namespace {

constexpr std::chrono::milliseconds firstWait = 250ms; // between looks, each of which is a row of the ledger
constexpr std::chrono::milliseconds longestWait = 1s;
constexpr std::chrono::milliseconds longestStart = 60s;
constexpr int mostRestarts = 2; // for an identity key that is missing

} // namespace

QCoro::Task<> LocalModelService::runSetUp(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    std::exception_ptr failure;
    try {
        const QString model = co_await chooseModel(stop);
        check();
        co_await ensureServer(stop);
        check();
        co_await pullModel(model, stop);
        check();
        co_await takeUp(model, stop);
    } catch (...) {
        failure = std::current_exception();
    }
    check();
    if (failure)
        fail(failure);
}

QCoro::Task<QString> LocalModelService::chooseModel(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    co_await knowMemory(stop);
    check();
    const QString recommended = ModelLadder::recommended(*m_memory, usesAMD());
    m_log->write(u"setup start; recommended "_s + recommended);
    if (has(recommended))
        co_return QString(recommended);
    const auto fit = ModelLadder::fitting(recommended, m_services.machine.freeDisk(m_values.models));
    if (!fit)
        throw LocalSetupError::noRoom();
    if (*fit != recommended) {
        Log::info(Log::Category::AIProvider, "Disk is tight; installing %{public}s instead of %{public}s"_L1,
                  {*fit, recommended});
        m_log->write(u"disk is tight; installing %1 instead"_s.arg(*fit));
    }
    co_return QString(*fit);
}

QCoro::Task<> LocalModelService::ensureServer(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (m_process && m_process->isStopping()) {
        co_await endRuntime(stop);
        check();
    }
    const Models models = co_await askModels(stop);
    check();
    if (!models) {
        co_await ensureRuntime(stop);
    } else if (!ownsServer()) {
        Log::info(Log::Category::AIProvider, "a server already answers on %d: not ours"_L1,
                  {m_values.port()});
        m_log->write(u"a server already answers on %1: not ours"_s.arg(m_values.port()));
    }
}

QCoro::Task<> LocalModelService::ensureRuntime(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    std::optional<Launch> launch = co_await installedRuntime(Checking::lenient, stop);
    check();
    if (!launch) {
        const Launch fetched = co_await downloadRuntime(stop);
        check();
        launch = fetched;
    }
    co_await startRuntime(*launch, stop);
}

QCoro::Task<std::optional<LocalModelService::Launch>>
LocalModelService::installedRuntime(Checking checking, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (hasManagedRuntime()) {
        std::function<bool(std::stop_token)> verifying =
            [installation = m_installation](std::stop_token stopped) { return installation.verify(stopped); };
        const bool isWhole = co_await m_services.work.run(std::move(verifying), stop);
        check();
        if (isWhole)
            co_return Launch{m_values.binary(), true};
        if (checking == Checking::strict)
            throw LocalSetupError::swapped();
    }
    const QString found = foundRuntime();
    if (found.isEmpty())
        co_return std::nullopt;
    Log::info(Log::Category::AIProvider, "Using existing local AI runtime at %{public}s"_L1, {found});
    m_log->write(u"using existing local AI runtime at %1, not signed by a known developer"_s.arg(found));
    co_return Launch{found, false};
}

QCoro::Task<LocalModelService::Launch> LocalModelService::downloadRuntime(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (!m_values.archive)
        throw LocalSetupError::unavailable();
    setPhase({Kind::downloadingRuntime, 0, {}});
    m_log->write(u"downloading runtime %1"_s.arg(m_values.version));
    RuntimeDownload::OnProgress onProgress = [this](qint64 done, std::optional<qint64> total) {
        const bool isKnown = total && *total > 0;
        const double part = isKnown ? static_cast<double>(done) / static_cast<double>(*total) : 0;
        noteProgress(Kind::downloadingRuntime, {}, done, total,
                     isKnown ? std::optional(static_cast<int>(std::min(part, 1.0) * 100)) : std::nullopt);
    };
    const RuntimeDownload::Parts parts{&m_services.network, &m_services.work, &m_services.clock, m_log,
                                       m_values};
    const QString archive = co_await RuntimeDownload::run(parts, std::move(onProgress), stop);
    check();
    m_log->write(u"runtime digest verified; unpacking"_s);
    std::function<void(std::stop_token)> installing = [installation = m_installation,
                                                       archive](std::stop_token stopped) {
        installation.install(archive, stopped);
        QFile::remove(archive);
    };
    co_await m_services.work.run(std::move(installing), stop);
    check();
    m_simulateFreshSetup = false;
    Log::info(Log::Category::AIProvider, "Downloaded local AI runtime %{public}s (digest verified)"_L1,
              {m_values.version});
    m_log->write(u"runtime %1 installed"_s.arg(m_values.version));
    co_return Launch{m_values.binary(), true};
}

QCoro::Task<> LocalModelService::startRuntime(Launch launch, std::stop_token stop)
{
    setPhase({Kind::startingRuntime, {}, {}});
    RuntimeProcess::Program program{
        .guard = m_values.guard,
        .runtime = launch.program,
        .arguments = {u"serve"_s},
        .environment = {{u"OLLAMA_HOST"_s, u"127.0.0.1:%1"_s.arg(m_values.port())}}};
    if (const QString models = qEnvironmentVariable("OLLAMA_MODELS"); !models.isEmpty())
        program.environment[u"OLLAMA_MODELS"_s] = models;
    m_process = std::make_unique<RuntimeProcess>(program, m_log.get());
    connect(m_process.get(), &RuntimeProcess::ended, this, &LocalModelService::runtimeEnded);
    if (launch.isOurs)
        Log::info(Log::Category::AIProvider, "Started managed local AI runtime"_L1);
    else
        Log::info(Log::Category::AIProvider, "Starting a runtime this %{public}s already had (%{public}s)"_L1,
                  {DesktopWords::here().device.toString(), launch.program});
    m_log->write(u"runtime started; waiting for the server"_s);
    co_await awaitServer(std::move(stop));
}

QCoro::Task<> LocalModelService::awaitServer(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const auto deadline = m_services.clock.elapsed() + longestStart;
    std::chrono::milliseconds wait = firstWait;
    while (true) {
        const Models models = co_await LocalServer::models(server(), stop);
        check();
        if (models) {
            co_await checkListeners(stop);
            check();
            setModels(models);
            co_return;
        }
        if (!ownsServer())
            throw LocalSetupError(
                u"The local AI runtime stopped right after it was started. What it said is in the "
                u"setup log."_s);
        if (m_services.clock.elapsed() >= deadline)
            break;
        co_await pause(m_services.clock, wait, stop);
        check();
        wait = std::min(wait * 2, longestWait);
    }
    co_await endRuntime(stop);
    throw LocalSetupError(u"The local AI runtime was started and doesn't answer. Try again."_s);
}

// Whoever answers may be somebody else, who was quicker; ours then has no place to listen.
QCoro::Task<> LocalModelService::checkListeners(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (!ownsServer())
        co_return;
    using Listeners = std::optional<std::vector<LocalMachine::Listener>>;
    std::function<Listeners()> asking = [machine = &m_services.machine, process = m_process->processId()] {
        return machine->listeners(process);
    };
    std::function<bool()> askingBeside = [machine = &m_services.machine, process = m_process->processId(),
                                          port = m_values.port()] {
        return machine->isShared(port, process);
    };
    const bool isShared = co_await m_services.work.run(std::move(askingBeside), stop);
    check();
    if (!ownsServer())
        co_return;
    const Listeners listeners = co_await m_services.work.run(std::move(asking), stop);
    check();
    if (!ownsServer())
        co_return;
    const bool isConfined = listeners && std::all_of(listeners->begin(), listeners->end(),
                                                     [](const auto &one) { return one.isLoopback(); });
    const bool answersHere =
        isConfined && std::any_of(listeners->begin(), listeners->end(),
                                  [this](const auto &one) { return one.port == m_values.port(); });
    m_process->stopLogging(); // from here on it may be given a chat
    if (answersHere && !isShared)
        co_return;
    co_await endRuntime(stop);
    check();
    if (!isConfined) {
        m_log->write(u"runtime listens beyond this machine; stopped"_s);
        throw LocalSetupError(u"The local AI runtime opened itself to your network, so it was stopped."_s);
    }
    if (answersHere) {
        m_log->write(u"another program listens on %1 as well; stopped"_s.arg(m_values.port()));
        throw LocalSetupError(
            u"Another program takes connections at the place of the local AI runtime (port %1), so "
            u"the runtime was stopped. Quit that program and try again."_s.arg(m_values.port()));
    }
    m_log->write(u"another server answers on %1: not ours"_s.arg(m_values.port()));
}

QCoro::Task<> LocalModelService::endRuntime(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (m_process)
        m_process->requestStop();
    while (ownsServer()) {
        co_await pause(m_services.clock, 50ms, stop);
        check();
    }
    m_process.reset();
}

QCoro::Task<> LocalModelService::pullModel(QString model, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (has(model))
        co_return;
    setPhase({Kind::downloadingModel, {}, model});
    for (int restarts = 0;; ++restarts) {
        const bool wasOurs = ownsServer();
        bool lacksKey = false;
        try {
            ModelPull::OnProgress onProgress = [this, model](const ModelPull::Progress &progress) {
                noteProgress(Kind::downloadingModel, model, progress.done, progress.total, progress.percent);
            };
            co_await ModelPull::run(server(), model, std::move(onProgress), &m_services.clock, stop);
        } catch (const ModelPull::MissingIdentityKey &) {
            lacksKey = true;
        } catch (const TransportError &) {
            check();
            if (wasOurs && !ownsServer())
                throw LocalSetupError(
                    u"The local AI runtime stopped while it was downloading the model. Try again "
                    u"to go on from there."_s);
            throw;
        }
        check();
        if (!lacksKey)
            break;
        if (!ownsServer() || restarts == mostRestarts) {
            m_log->write(u"identity key missing under a foreign server"_s);
            Log::error(Log::Category::AIProvider, "identity key missing under a foreign server"_L1);
            throw LocalSetupError::keyMissing();
        }
        m_log->write(u"identity key missing under our runtime: restarting it"_s);
        Log::info(Log::Category::AIProvider, "identity key missing under our runtime: restarting it"_L1);
        co_await endRuntime(stop);
        check();
        co_await ensureRuntime(stop);
        check();
        setPhase({Kind::downloadingModel, {}, model});
    }
    const Models models = co_await askModels(stop);
    check();
}

// A model that the server has becomes the one that replies come from: whoever asked for one on this machine
// was told that nothing leaves it.
QCoro::Task<> LocalModelService::takeUp(QString model, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const Models models = co_await askModels(stop);
    check();
    m_services.settings.setProviderName(providerName());
    m_services.settings.setBaseURLString(baseURL());
    m_services.settings.setModel(model);
    m_services.settings.setHostedChatEnabled(false);
    Log::info(Log::Category::AIProvider, "Local AI ready with model %{public}s"_L1, {model});
    m_log->write(u"local AI ready with model "_s + model);
    setPhase({Kind::ready, {}, model});
}

} // namespace morvane
