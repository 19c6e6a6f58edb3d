#include "ai/speech/WhisperServer.h"

#include "ai/local/RuntimeProcess.h"
#include "ai/speech/WhisperUpload.h"
#include "async/Work.h"
#include "audio/AudioError.h"
#include "network/LoopbackPort.h"
#include "utils/log/Log.h"

#include <QPointer>

#include <algorithm>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds longestStart = 60s; // a large model from a slow disk
constexpr std::chrono::milliseconds longestLook = 5s;
constexpr std::chrono::milliseconds firstWait = 50ms;
constexpr std::chrono::milliseconds longestWait = 500ms;
constexpr std::chrono::milliseconds longestAnswer = 20s; // to as much sound as that
constexpr std::chrono::milliseconds timeToRest = 5min;   // without a word
constexpr int stillLoading = 503;
constexpr int asksPerSound = 2;

bool staysHere(const QUrl & /*from*/, const QUrl & /*to*/)
{
    return false;
}

// One core is left to the window and to the sound.
QString threads()
{
    return QString::number(std::clamp(static_cast<int>(std::thread::hardware_concurrency()) - 1, 1, 8));
}

// Wipes what was sent when the wait for its answer ends in whatever way.
class Wiping {
public:
    explicit Wiping(QByteArray form)
        : m_form(std::move(form))
    {}
    ~Wiping() { WhisperUpload::wipe(m_form); }
    Wiping(const Wiping &) = delete;
    Wiping &operator=(const Wiping &) = delete;

private:
    QByteArray m_form;
};

} // namespace

WhisperServer::WhisperServer(Parts parts, QObject *parent)
    : QObject(parent)
    , m_parts(std::move(parts))
{}

WhisperServer::~WhisperServer()
{
    end();
}

// Words

QCoro::Task<QString> WhisperServer::words(Program program, QByteArray form, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const Wiping wiping(form);
    for (int attempt = 0; attempt < asksPerSound; ++attempt) {
        const std::optional<QString> words = co_await asked(program, form, stop);
        check();
        if (words)
            co_return *words;
        end();
    }
    throw AudioError(AudioError::Case::recognitionFailed);
}

// Nothing from a server that is no good.
QCoro::Task<std::optional<QString>> WhisperServer::asked(Program program, QByteArray form,
                                                         std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    warmUp(program);
    const Ready ready = m_ready;
    const bool isReady = co_await ready.wait(stop);
    check();
    if (!isReady)
        co_return std::nullopt;
    const int port = m_port;
    HttpRequest request;
    request.method = "POST";
    request.url = address(u"/inference"_s);
    request.headers.push_back({"Content-Type", WhisperUpload::contentType()});
    request.body = std::move(form);
    request.timeout = longestAnswer;
    request.limit = longestAnswer;
    request.followsRedirect = staysHere;
    const auto voice = session(SensitiveData::voice);
    const QPointer self(this);
    try {
        auto response = co_await voice->send(std::move(request), stop);
        const QByteArray answer = co_await readBody(std::move(response), WhisperUpload::longestAnswer, stop);
        co_return WhisperUpload::wordsOf(answer);
    } catch (const CancelledError &) {
        if (self && self->m_port == port)
            self->end(); // it may hang, and would go on working on what nobody waits for
        throw;
    } catch (const TransportError &error) {
        Log::error(Log::Category::Audio, "The speech server did not answer: %{public}s"_L1,
                   {error.description()});
    }
    co_return std::nullopt;
}

// The server

void WhisperServer::warmUp(const Program &program)
{
    m_rest = m_parts.clock.after(timeToRest, [this] { end(); });
    if (isRunning() && m_program == program)
        return;
    end();
    m_program = program;
    begin();
}

bool WhisperServer::isRunning() const
{
    return m_process && m_process->isRunning() && !m_process->isStopping();
}

void WhisperServer::begin()
{
    m_ready = Ready();
    m_port = LoopbackPort::unused().value_or(0);
    if (m_port == 0)
        return m_ready.resolve(false);
    // What it prints are the words that it heard, so nobody reads that.
    m_process = std::make_unique<RuntimeProcess>(
        RuntimeProcess::Program{.guard = m_parts.guard,
                                .runtime = m_program.path,
                                .arguments = {u"--host"_s, u"127.0.0.1"_s, u"--port"_s,
                                              QString::number(m_port), u"--model"_s, m_program.model,
                                              u"--threads"_s, threads(), u"--no-timestamps"_s}},
        nullptr);
    Log::info(Log::Category::Audio, "Started the speech server"_L1);
    m_starting = TaskHandle::start(
        [this, ready = m_ready](std::stop_token stop) { return awaitReady(ready, std::move(stop)); });
}

// One that hangs is not waited for: the next has a port of its own.
void WhisperServer::end()
{
    m_starting = {};
    m_ready.resolve(false);
    m_rest.reset();
    std::erase_if(m_leaving, [](const auto &process) { return !process->isRunning(); });
    if (!m_process)
        return;
    m_process->requestStop();
    m_leaving.push_back(std::move(m_process));
}

QCoro::Task<> WhisperServer::awaitReady(Ready ready, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    try {
        const bool fit = co_await isFit(stop);
        check();
        if (!fit)
            end();
        ready.resolve(fit);
    } catch (const CancelledError &) {
        ready.resolve(false);
    }
}

QCoro::Task<bool> WhisperServer::isFit(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const bool isPlaced = co_await hasPlace(stop);
    check();
    if (!isPlaced)
        co_return false;
    const bool isLoaded = co_await hasLoaded(stop);
    co_return isLoaded;
}

// It is looked at from outside before anything is asked of it: whether it and nobody else is reached at its
// port, and only from this machine.
QCoro::Task<bool> WhisperServer::hasPlace(std::stop_token stop)
{
    struct Place {
        std::optional<std::vector<LocalMachine::Listener>> listeners;
        bool isShared = false;
    };
    const auto check = m_lifeline.check(stop);
    const auto deadline = m_parts.clock.elapsed() + longestStart;
    for (auto wait = firstWait; isRunning() && m_parts.clock.elapsed() < deadline;
         wait = std::min(wait * 2, longestWait)) {
        std::function<Place()> looking = [&machine = m_parts.machine, id = m_process->processId(),
                                          port = m_port] {
            return Place{machine.listeners(id), machine.isShared(port, id)};
        };
        const Place place = co_await m_parts.work.run(std::move(looking), stop);
        check();
        const auto at = place.listeners.value_or(std::vector<LocalMachine::Listener>());
        if (!std::ranges::all_of(at, &LocalMachine::Listener::isLoopback)) {
            Log::error(Log::Category::Audio, "The speech server listens beyond this machine; stopped"_L1);
            co_return false;
        }
        if (std::ranges::find(at, m_port, &LocalMachine::Listener::port) != at.end())
            co_return !place.isShared;
        co_await pause(m_parts.clock, wait, stop);
        check();
    }
    co_return false;
}

// An older server listens once its model is there; a newer one before, and says so.
QCoro::Task<bool> WhisperServer::hasLoaded(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const auto deadline = m_parts.clock.elapsed() + longestStart;
    for (auto wait = firstWait; isRunning() && m_parts.clock.elapsed() < deadline;
         wait = std::min(wait * 2, longestWait)) {
        const int status = co_await statusOf(stop);
        check();
        if (status != 0 && status != stillLoading)
            co_return true;
        co_await pause(m_parts.clock, wait, stop);
        check();
    }
    co_return false;
}

// 0 when nobody answers.
QCoro::Task<int> WhisperServer::statusOf(std::stop_token stop)
{
    HttpRequest request;
    request.url = address(u"/health"_s);
    request.timeout = longestLook;
    request.limit = longestLook;
    request.followsRedirect = staysHere;
    const auto plain = session({});
    try {
        auto response = co_await plain->send(std::move(request), stop);
        const int status = response.status;
        co_await discardBody(std::move(response), stop);
        co_return status;
    } catch (const TransportError &) {
    }
    co_return 0;
}

QUrl WhisperServer::address(const QString &path) const
{
    QUrl url(u"http://127.0.0.1"_s);
    url.setPort(m_port);
    url.setPath(path);
    return url;
}

std::shared_ptr<HttpSession> WhisperServer::session(SensitiveDataSet carrying) const
{
    return m_parts.network.session(EgressFeature::speech, carrying);
}

} // namespace morvane
