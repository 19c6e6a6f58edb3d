#include "ai/local/LocalModelService.h"

#include "ai/local/LocalSetupError.h"
#include "ai/local/ModelLadder.h"
#include "ai/local/RuntimeProcess.h"
#include "async/Clock.h"
#include "persistence/SettingsStore.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"
#include "utils/text/Text.h"

#include <algorithm>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = LocalModelService::Phase::Kind;

namespace {

constexpr std::chrono::milliseconds betweenFigures = 100ms;

} // namespace

LocalModelService::LocalModelService(const Services &services, LocalRuntimeValues values, QObject *parent)
    : LocalModelServing(parent)
    , m_services(services)
    , m_values(std::move(values))
    , m_log(std::make_shared<SetupLog>(m_values.setupLog(), m_services.clock))
    , m_installation(m_values, m_services.vault, m_log)
    , m_pins(m_values.pins())
{}

LocalModelService::~LocalModelService()
{
    end();
}

QString LocalModelService::providerName()
{
    return u"Local model (this %1)"_s.arg(DesktopWords::here().device);
}

// What is shown

LocalModelServing::State LocalModelService::state() const
{
    switch (m_phase.kind) {
    case Kind::unknown:
    case Kind::notSetUp:
        return State::absent;
    case Kind::downloadingRuntime:
        return State::installing;
    case Kind::downloadingModel: // beside one that goes on answering
        return m_readyModel.isEmpty() ? State::installing : State::ready;
    case Kind::startingRuntime:
        return State::starting;
    case Kind::ready:
        return State::ready;
    case Kind::failed:
        return State::failed;
    }
    return State::absent;
}

QString LocalModelService::model() const
{
    return state() == State::ready ? m_readyModel : QString();
}

QString LocalModelService::baseURL() const
{
    return m_values.serverOrigin.toString() + u"/v1"_s;
}

bool LocalModelService::ownsServer() const
{
    return m_process && m_process->isRunning();
}

bool LocalModelService::isChosenHere() const
{
    return m_services.settings.baseURLString() == baseURL() &&
           !Text::trimmed(m_services.settings.model()).isEmpty();
}

bool LocalModelService::isSetUp() const
{
    return isChosenHere() && m_services.settings.providerName() == providerName();
}

bool LocalModelService::has(const QString &model) const
{
    return std::any_of(m_models.begin(), m_models.end(),
                       [&](const ServerModel &listed) { return listed.name == model; });
}

void LocalModelService::setPhase(Phase phase)
{
    if (phase.kind == Kind::ready)
        m_readyModel = phase.text;
    else if (phase.kind != Kind::downloadingModel)
        m_readyModel.clear();
    if (m_phase == phase)
        return;
    const bool isOther = m_phase.kind != phase.kind || m_phase.text != phase.text;
    m_phase = std::move(phase);
    if (!isOther) {
        Q_EMIT progressChanged();
        return;
    }
    m_meter = {};
    m_figures = {};
    m_lastProgress = m_services.clock.elapsed() - betweenFigures;
    Q_EMIT progressChanged();
    Q_EMIT changed();
}

void LocalModelService::noteProgress(Kind kind, const QString &model, qint64 done,
                                     std::optional<qint64> total, std::optional<int> percent)
{
    if (m_phase.kind != kind || m_phase.text != model)
        setPhase({kind, percent, model});
    m_phase.percent = percent;
    noteFigures(done, total);
}

// Tens of thousands of lines may come in a second, and nobody reads more than a few of them.
void LocalModelService::noteFigures(qint64 done, std::optional<qint64> total)
{
    const auto now = m_services.clock.elapsed();
    const bool isDue = now - m_lastProgress >= betweenFigures;
    if (!isDue && done != total)
        return;
    m_lastProgress = now;
    m_figures = m_meter.note(done, total, now);
    if (isDue)
        Q_EMIT progressChanged();
}

// What there is when nothing is under way.
void LocalModelService::settle()
{
    if (!m_readyModel.isEmpty())
        setPhase({Kind::ready, {}, m_readyModel});
    else
        setPhase({isSetUp() ? Kind::unknown : Kind::notSetUp, {}, {}});
}

// The words for the person; both logs hear of it.
QString LocalModelService::noteFailure(const std::exception_ptr &error)
{
    QString message =
        u"Local AI setup failed. Check your internet connection and free disk space, then try again."_s;
    QString reason = message;
    try {
        std::rethrow_exception(error);
    } catch (const UserPresentableError &known) {
        message = known.userMessage();
        reason = message;
    } catch (const std::exception &other) {
        reason = QString::fromUtf8(other.what());
    }
    Log::error(Log::Category::AIProvider, "Local AI setup failed: %s"_L1, {reason});
    m_log->write(u"FAILED: "_s + reason);
    return message;
}

void LocalModelService::fail(const std::exception_ptr &error)
{
    setPhase({Kind::failed, {}, noteFailure(error)});
}

void LocalModelService::setModels(Models models)
{
    const bool isAnswering = models.has_value();
    auto list = std::move(models).value_or(std::vector<ServerModel>());
    if (m_isAnswering == isAnswering && m_models == list)
        return;
    m_isAnswering = isAnswering;
    m_models = std::move(list);
    compareFingerprints();
    judgeVisionSidecar();
    Q_EMIT detailChanged();
    Q_EMIT changed();
}

void LocalModelService::compareFingerprints()
{
    auto changes = m_pins.compare(m_models);
    if (changes == m_fingerprintChanges || !m_isAnswering)
        return;
    m_fingerprintChanges = std::move(changes);
    QStringList sentences;
    for (const auto &change : m_fingerprintChanges) {
        Log::error(Log::Category::AIProvider,
                   "Model %{public}s changed fingerprint (%{public}s → %{public}s)"_L1,
                   {change.model, change.pinned, change.found});
        m_log->write(u"model fingerprint changed: "_s + change.model);
        sentences += u"The model %1 on this %2 is not the one %3 first installed: its published fingerprint "
                     u"changed. Delete it and set it up again if you did not update it yourself."_s.arg(
                         change.model, DesktopWords::here().device, Product::name);
    }
    m_integrityWarning = sentences.join(u'\n');
}

void LocalModelService::acceptFingerprints()
{
    for (const auto &change : std::exchange(m_fingerprintChanges, {}))
        m_pins.accept(change);
    m_integrityWarning.clear();
    Q_EMIT detailChanged();
}

void LocalModelService::judgeVisionSidecar()
{
    using State = VisionSidecarState::Kind;
    if (m_visionSidecar.kind == State::downloading)
        return;
    if (has(ModelLadder::vision()))
        setVisionSidecar({State::installed, {}});
    else if (m_memory && ModelLadder::offersVision(*m_memory, usesAMD()))
        setVisionSidecar({State::available, {}});
    else
        setVisionSidecar({State::notOffered, {}});
}

void LocalModelService::setVisionSidecar(VisionSidecarState state)
{
    if (m_visionSidecar == state)
        return;
    m_visionSidecar = std::move(state);
    Q_EMIT detailChanged();
}

void LocalModelService::setOnVisionSidecarInstalled(std::function<void()> installed)
{
    m_onVisionSidecarInstalled = std::move(installed);
}

// What the person asks for

void LocalModelService::start(Task task)
{
    m_refresh = {};
    m_task = TaskHandle::start(
        [this, &task](std::stop_token stop) { return run(std::move(task), std::move(stop)); });
}

QCoro::Task<> LocalModelService::run(Task task, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    setBusy(true);
    co_await task(stop);
    check();
    setBusy(false);
}

void LocalModelService::setBusy(bool isBusy)
{
    if (std::exchange(m_isBusy, isBusy) != isBusy)
        Q_EMIT detailChanged();
}

void LocalModelService::prepare()
{
    if (!isBusy())
        start([this](std::stop_token stop) { return runPreparation(std::move(stop)); });
}

void LocalModelService::refresh()
{
    if (isBusy() || m_refresh.isRunning())
        return;
    m_refresh = TaskHandle::start([this](std::stop_token stop) { return runRefresh(std::move(stop)); });
}

void LocalModelService::setUp()
{
    if (!isBusy())
        start([this](std::stop_token stop) { return runSetUp(std::move(stop)); });
}

void LocalModelService::cancel()
{
    if (!isBusy())
        return;
    m_task = {};
    // One that nobody has looked at yet, where it listens, isn't left to itself.
    if (m_phase.kind == Kind::startingRuntime && m_process)
        m_process->requestStop();
    if (m_visionSidecar.kind == VisionSidecarState::Kind::downloading) {
        m_visionSidecar = {};
        judgeVisionSidecar();
    }
    settle();
    setBusy(false);
}

void LocalModelService::pull(const QString &model)
{
    const QString name = Text::trimmed(model);
    if (!isBusy() && !name.isEmpty())
        start([this, name](std::stop_token stop) { return runPull(name, std::move(stop)); });
}

void LocalModelService::remove(const QString &model)
{
    if (!isBusy())
        start([this, model](std::stop_token stop) { return runRemoval(model, std::move(stop)); });
}

void LocalModelService::use(const QString &model)
{
    if (!isBusy() && has(model))
        start([this, model](std::stop_token stop) { return takeUp(model, std::move(stop)); });
}

void LocalModelService::stop()
{
    start([this](std::stop_token stop) { return runStop(std::move(stop)); });
}

void LocalModelService::restart()
{
    start([this](std::stop_token stop) { return runRestart(std::move(stop)); });
}

void LocalModelService::watchForRuntime(bool watches)
{
    if (!watches)
        m_watch = {};
    else if (!m_watch.isRunning())
        m_watch = TaskHandle::start([this](std::stop_token stop) { return runWatch(std::move(stop)); });
}

void LocalModelService::installVisionSidecar()
{
    if (!isBusy())
        start([this](std::stop_token stop) { return runVisionSidecar(std::move(stop)); });
}

void LocalModelService::end()
{
    m_task = {};
    m_refresh = {};
    m_watch = {};
    m_process.reset();
}

// Whoever is setting up sees it there.
void LocalModelService::runtimeEnded()
{
    m_process.release()->deleteLater();
    if (isBusy())
        return;
    setModels(std::nullopt);
    setPhase({Kind::failed, {}, u"The local AI runtime has stopped. Restart it to go on."_s});
}

} // namespace morvane
