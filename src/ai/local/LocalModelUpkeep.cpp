// What is done with a runtime and its models once they are there.

#include "ai/local/LocalModelService.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/ModelLadder.h"
#include "ai/local/ModelPull.h"
#include "ai/local/RuntimeProcess.h"
#include "async/Clock.h"
#include "network/TransportError.h"
#include "persistence/SettingsStore.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = LocalModelService::Phase::Kind;

namespace {

constexpr std::chrono::milliseconds betweenLooks = 3s;
constexpr int looksForOneQuestion = 5; // a server is asked less often: each question is a row of the ledger

} // namespace

// A server of another place is not looked for, and no runtime is started that nobody set up here.
QCoro::Task<> LocalModelService::runPreparation(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (!isChosenHere() || m_simulateFreshSetup) {
        setPhase({Kind::notSetUp, {}, {}});
        co_return;
    }
    std::exception_ptr failure;
    try {
        Models models = co_await askModels(stop);
        check();
        if (!models && isSetUp()) {
            setPhase({Kind::startingRuntime, {}, {}});
            const std::optional<Launch> launch = co_await installedRuntime(Checking::strict, stop);
            check();
            if (launch) {
                co_await startRuntime(*launch, stop);
                check();
                models = m_models;
            }
        }
        const QString model = m_services.settings.model();
        if (models && has(model))
            setPhase({Kind::ready, {}, model});
        else
            setPhase({Kind::notSetUp, {}, {}});
        co_await knowMemory(stop);
    } catch (...) {
        failure = std::current_exception();
    }
    check();
    if (failure)
        fail(failure);
}

QCoro::Task<> LocalModelService::runRefresh(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const Models models = co_await askModels(stop);
    check();
    const QString model = m_services.settings.model();
    if (models && isChosenHere() && has(model))
        setPhase({Kind::ready, {}, model});
    else if (m_phase.kind == Kind::ready || m_phase.kind == Kind::unknown)
        setPhase({!models && isSetUp() ? Kind::unknown : Kind::notSetUp, {}, {}});
    std::optional<std::uint64_t> memory;
    if (models) {
        memory = co_await LocalServer::memoryInUse(server(), stop);
        check();
    }
    if (std::exchange(m_memoryInUse, memory) != memory)
        Q_EMIT detailChanged();
    co_await knowMemory(stop);
}

QCoro::Task<> LocalModelService::runWatch(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    for (int look = 0; foundRuntime().isEmpty(); ++look) {
        Models models;
        if (look % looksForOneQuestion == 0) {
            models = co_await askModels(stop);
            check();
        }
        if (models)
            break;
        co_await pause(m_services.clock, betweenLooks, stop);
        check();
    }
    Q_EMIT runtimeAppeared();
}

QCoro::Task<> LocalModelService::runPull(QString model, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    std::exception_ptr failure;
    try {
        co_await ensureServer(stop);
        check();
        co_await pullModel(model, stop);
        check();
        co_await takeUp(model, stop);
    } catch (...) {
        failure = std::current_exception();
    }
    check();
    if (!failure)
        co_return;
    if (m_readyModel.isEmpty()) {
        fail(failure);
        co_return;
    }
    const QString sentence = noteFailure(failure);
    settle();
    Q_EMIT failed(sentence);
}

QCoro::Task<> LocalModelService::runRemoval(QString model, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    QString failure;
    try {
        co_await LocalServer::remove(server(), model, stop);
    } catch (const LocalSetupError &error) {
        failure = error.userMessage();
    }
    check();
    if (!failure.isEmpty()) {
        Q_EMIT failed(failure);
        co_return;
    }
    m_pins.forget(model);
    m_log->write(u"deleted model "_s + model);
    if (isChosenHere() && m_services.settings.model() == model) {
        m_services.settings.setModel(QString());
        setPhase({Kind::notSetUp, {}, {}});
    }
    const Models models = co_await askModels(stop);
    check();
}

QCoro::Task<> LocalModelService::runStop(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (!ownsServer()) {
        settle();
        co_return;
    }
    co_await endRuntime(stop);
    check();
    m_log->write(u"runtime stopped"_s);
    setModels(std::nullopt);
    setPhase({Kind::unknown, {}, {}});
}

QCoro::Task<> LocalModelService::runRestart(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const QString model = m_services.settings.model();
    std::exception_ptr failure;
    try {
        co_await endRuntime(stop);
        check();
        const Models models = co_await askModels(stop);
        check();
        if (!models) {
            setPhase({Kind::startingRuntime, {}, {}});
            const std::optional<Launch> launch = co_await installedRuntime(Checking::strict, stop);
            check();
            if (!launch)
                throw LocalSetupError(
                    u"No local AI runtime is installed. Set up local AI again to install one."_s);
            co_await startRuntime(*launch, stop);
            check();
        }
        if (isChosenHere() && has(model))
            setPhase({Kind::ready, {}, model});
        else
            setPhase({Kind::notSetUp, {}, {}});
    } catch (...) {
        failure = std::current_exception();
    }
    check();
    if (failure)
        fail(failure);
    Q_EMIT restarted(!failure);
}

QCoro::Task<> LocalModelService::runVisionSidecar(std::stop_token stop)
{
    using State = VisionSidecarState::Kind;
    const auto check = m_lifeline.check(stop);
    co_await knowMemory(stop);
    check();
    const QString model = ModelLadder::vision();
    const auto free = m_services.machine.freeDisk(m_values.models);
    if (free && *free < ModelLadder::need(model)) {
        setVisionSidecar({State::failed, u"Not enough free disk space for the image model."_s});
        co_return;
    }
    setVisionSidecar({State::downloading, {}});
    QString failure;
    try {
        ModelPull::OnProgress onProgress = [this](const ModelPull::Progress &progress) {
            noteFigures(progress.done, progress.total);
        };
        co_await ModelPull::run(server(), model, std::move(onProgress), &m_services.clock, stop);
    } catch (const CancelledError &) {
        throw;
    } catch (const LocalSetupError &error) {
        failure = error.userMessage();
        Log::error(Log::Category::AIProvider, "Sidecar pull error: %{public}s"_L1, {failure});
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
        Log::error(Log::Category::AIProvider, "Sidecar pull failed: %s"_L1, {failure});
    }
    check();
    if (!failure.isEmpty()) {
        setVisionSidecar(
            {State::failed, u"The image model didn't download. Check your connection and try again."_s});
        co_return;
    }
    Log::info(Log::Category::AIProvider, "Vision sidecar ready: %{public}s"_L1, {model});
    setVisionSidecar({State::installed, {}});
    if (m_onVisionSidecarInstalled)
        m_onVisionSidecarInstalled();
    const Models models = co_await askModels(stop);
    check();
}

} // namespace morvane
