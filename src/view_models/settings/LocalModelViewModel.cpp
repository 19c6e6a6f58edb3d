#include "view_models/settings/LocalModelViewModel.h"

#include "async/Clock.h"
#include "async/Work.h"
#include "persistence/SettingsStore.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/UserPresentableError.h"
#include "view_models/settings/LocalModelWords.h"

#include <QCoreApplication>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using Kind = LocalModelService::Phase::Kind;
using Vision = LocalModelService::VisionSidecarState::Kind;

namespace {

constexpr qsizetype longestLog = 40'000; // characters that are shown

// The end of the log, from the start of a line.
QString endOfLog(const QString &path)
{
    try {
        const QString text =
            QString::fromUtf8(PrivateFile::read(path, 2 * SetupLog::largestFile).value_or(QByteArray()));
        if (text.isEmpty())
            return u"Nothing was set up here yet."_s;
        const QString end = text.right(longestLog);
        return end.size() == text.size() ? text : end.sliced(end.indexOf(u'\n') + 1);
    } catch (const FileError &) {
        return u"The log could not be read."_s;
    }
}

} // namespace

LocalModelViewModel::LocalModelViewModel(LocalModelService &service, SettingsStore &settings, Clock &clock,
                                         Work &work, QObject *parent)
    : QObject(parent)
    , m_service(service)
    , m_settings(settings)
    , m_clock(clock)
    , m_work(work)
{
    connect(&service, &LocalModelService::changed, this, &LocalModelViewModel::follow);
    connect(&service, &LocalModelService::detailChanged, this, &LocalModelViewModel::follow);
    connect(&service, &LocalModelService::progressChanged, this, &LocalModelViewModel::progressChanged);
    connect(&service, &LocalModelService::failed, this, &LocalModelViewModel::setFailure);
    follow();
}

LocalModelViewModel::~LocalModelViewModel() = default;

void LocalModelViewModel::follow()
{
    const auto &phase = m_service.phase();
    m_models.show(m_service.models(), phase.kind == Kind::ready ? phase.text : QString());
    Q_EMIT changed();
    Q_EMIT progressChanged();
}

LocalModelViewModel::State LocalModelViewModel::state() const
{
    switch (m_service.phase().kind) {
    case Kind::unknown:
        return m_service.isSetUp() ? State::stopped : State::notSetUp;
    case Kind::notSetUp:
        return State::notSetUp;
    case Kind::downloadingRuntime:
    case Kind::startingRuntime:
    case Kind::downloadingModel:
        return State::working;
    case Kind::ready:
        return State::ready;
    case Kind::failed:
        return State::failed;
    }
    return State::notSetUp;
}

QString LocalModelViewModel::title() const
{
    return LocalModelWords::title(m_service);
}

QString LocalModelViewModel::explanation() const
{
    return LocalModelWords::explanation(m_service);
}

double LocalModelViewModel::progress() const
{
    const TransferFigures &figures = m_service.figures();
    if (!isFetching() || !figures.total || *figures.total <= 0)
        return -1;
    return std::clamp(static_cast<double>(figures.done) / static_cast<double>(*figures.total), 0.0, 1.0);
}

bool LocalModelViewModel::isFetching() const
{
    const Kind kind = m_service.phase().kind;
    return kind == Kind::downloadingRuntime || kind == Kind::downloadingModel ||
           m_service.visionSidecar().kind == Vision::downloading;
}

// A server of somebody else's is theirs to stop and to start.
bool LocalModelViewModel::canStart() const
{
    return m_service.isSetUp() && !isBusy() && (m_service.ownsServer() || !m_service.isAnswering());
}

QString LocalModelViewModel::restartWord() const
{
    return m_service.ownsServer() ? u"Restart"_s : u"Start"_s;
}

QString LocalModelViewModel::installCommand() const
{
    return m_isUnavailable ? SetupPlan::installCommand() : QString();
}

QString LocalModelViewModel::fingerprints() const
{
    return LocalModelWords::fingerprints(m_service.fingerprintChanges());
}

bool LocalModelViewModel::offersVision() const
{
    return m_service.visionSidecar().kind != Vision::notOffered;
}

bool LocalModelViewModel::canFetchVision() const
{
    const Vision kind = m_service.visionSidecar().kind;
    return !isBusy() && m_service.isAnswering() && (kind == Vision::available || kind == Vision::failed);
}

QString LocalModelViewModel::vision() const
{
    return LocalModelWords::vision(m_service.visionSidecar());
}

void LocalModelViewModel::look()
{
    if (m_settings.baseURLString() == m_service.baseURL())
        m_service.refresh();
}

void LocalModelViewModel::setUp()
{
    if (isBusy() || isPlanning())
        return;
    m_nextLook.reset();
    m_question.clear();
    m_problem.clear();
    m_planning =
        TaskHandle::start([this](std::stop_token stop) { return plan(QPointer(this), std::move(stop)); });
    Q_EMIT questionChanged();
}

QCoro::Task<> LocalModelViewModel::plan(QPointer<LocalModelViewModel> self, std::stop_token stop)
{
    SetupPlan plan;
    try {
        plan = co_await self->m_service.plan(stop);
    } catch (const std::exception &error) {
        plan.problem = presentationOf(std::current_exception()).message;
    }
    if (self && !stop.stop_requested())
        QMetaObject::invokeMethod(
            self, [self, plan] { self->take(plan); }, Qt::QueuedConnection); // when this task has ended
}

void LocalModelViewModel::take(const SetupPlan &plan)
{
    const bool isWatching = m_nextLook != nullptr;
    m_isUnavailable = plan.runtime == SetupPlan::Runtime::unavailable;
    m_problem = plan.problem;
    m_question = plan.problem.isEmpty() ? LocalModelWords::question(plan, m_service.values()) : QString();
    if (m_problem.isEmpty() && m_question.isEmpty())
        m_service.setUp();
    if (isWatching && m_isUnavailable)
        watch();
    else
        m_nextLook.reset();
    Q_EMIT questionChanged();
}

void LocalModelViewModel::answer(bool yes)
{
    m_question.clear();
    Q_EMIT questionChanged();
    if (yes)
        m_service.setUp();
}

void LocalModelViewModel::watch()
{
    m_nextLook = m_clock.after(betweenLooks, [this] {
        m_planning =
            TaskHandle::start([this](std::stop_token stop) { return plan(QPointer(this), std::move(stop)); });
    });
}

void LocalModelViewModel::leave()
{
    m_nextLook.reset();
}

void LocalModelViewModel::remove(const QString &model)
{
    setFailure({});
    m_service.remove(model);
}

void LocalModelViewModel::setFailure(const QString &failure)
{
    m_failure = failure;
    Q_EMIT failureChanged();
}

void LocalModelViewModel::readLog()
{
    m_reading = TaskHandle::start(
        [this](std::stop_token stop) { return readLogFile(QPointer(this), std::move(stop)); });
}

QCoro::Task<> LocalModelViewModel::readLogFile(QPointer<LocalModelViewModel> self, std::stop_token stop)
{
    std::function<QString()> reading = [path = self->m_service.setupLogPath()] { return endOfLog(path); };
    const QString text = co_await self->m_work.run(std::move(reading), stop);
    if (!self)
        co_return;
    self->m_logText = text;
    Q_EMIT self->logChanged();
}

} // namespace morvane
