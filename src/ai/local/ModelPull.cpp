#include "ai/local/ModelPull.h"

#include "ai/local/LocalSetupError.h"
#include "ai/providers/LineJson.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ReplyLines.h"
#include "ai/providers/ServerWords.h"
#include "async/Clock.h"
#include "utils/log/Log.h"
#include "utils/text/Json.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Progress = ModelPull::Progress;

namespace {

constexpr std::chrono::seconds longestSilence{3'600}; // the server may be checking a large layer
constexpr int mostBreaks = 4;                         // in a row, without a byte between them

[[noreturn]] void fail(const QString &model, const QString &words)
{
    Log::error(Log::Category::AIProvider, "Model pull error: %{public}s"_L1, {words});
    if (words.contains("id_ed25519: no such file"_L1))
        throw ModelPull::MissingIdentityKey();
    throw LocalSetupError(words.isEmpty() ? u"Couldn't download the model %1."_s.arg(model)
                                          : u"Couldn't download the model %1: %2"_s.arg(model, words));
}

// The rest won't go better the next time.
bool mayPass(const TransportError &error)
{
    using Code = TransportError::Code;
    static constexpr std::array passing{Code::TimedOut, Code::ConnectionLost, Code::CannotConnect};
    return std::find(passing.begin(), passing.end(), error.code()) != passing.end();
}

struct Reading {
    ModelPull::OnProgress onProgress;
    QString model;
    bool isComplete = false;
    bool hasMoved = false;

    ReplyLines::Progress take(QByteArrayView bytes)
    {
        const auto line = LineJson::parseObject(bytes);
        if (!line)
            return ReplyLines::Progress::goesOn;
        isComplete = Json::string(*line, "status"_L1) == u"success"_s;
        if (const auto progress = ModelPull::read(*line, model)) {
            hasMoved = true;
            onProgress(*progress);
        }
        return isComplete ? ReplyLines::Progress::done : ReplyLines::Progress::goesOn;
    }
};

QCoro::Task<> pullOnce(LocalServer server, std::shared_ptr<Reading> reading, std::stop_token stop)
{
    const QJsonObject body{{u"model"_s, reading->model}, {u"stream"_s, true}};
    HttpRequest request = server.request(u"/api/pull"_s, body);
    request.timeout = longestSilence;
    const auto session = server.session();
    auto response = co_await session->send(std::move(request), stop);
    if (!ProviderFailure::isSuccess(response.status)) {
        const int status = response.status;
        const QByteArray words =
            co_await ProviderFailure::readStart(std::move(response), ProviderFailure::errorBodyLimit, stop);
        const QString said = ServerWords::of(words);
        fail(reading->model, said.isEmpty() ? u"HTTP %1"_s.arg(status) : said);
    }
    ReplyLines::Reader reader = [reading](QByteArrayView line) { return reading->take(line); };
    co_await ReplyLines::read(std::move(response), std::move(reader), stop);
    if (!reading->isComplete)
        throw TransportError(TransportError::Code::ConnectionLost,
                             u"The server ended its reply before the model was there."_s);
}

} // namespace

std::optional<Progress> ModelPull::read(const QJsonObject &line, const QString &model)
{
    if (line.contains("error"_L1))
        fail(model, ServerWords::of(line));
    const auto total = Json::integer(line, "total"_L1);
    const auto completed = Json::integer(line, "completed"_L1);
    if (!total || !completed || *total <= 0 || *completed < 0)
        return std::nullopt;
    const qint64 done = std::min(*completed, *total);
    return Progress{done, *total,
                    static_cast<int>(static_cast<double>(done) / static_cast<double>(*total) * 100)};
}

QCoro::Task<> ModelPull::run(LocalServer server, QString model, OnProgress onProgress, Clock *clock,
                             std::stop_token stop)
{
    const auto reading = std::make_shared<Reading>();
    reading->onProgress = std::move(onProgress);
    reading->model = model;
    for (int breaks = 0;;) {
        reading->hasMoved = false;
        std::optional<TransportError> broken;
        try {
            co_await pullOnce(server, reading, stop);
        } catch (const TransportError &error) {
            broken = error;
        }
        throwIfStopped(stop);
        if (!broken)
            break;
        breaks = reading->hasMoved ? 1 : breaks + 1;
        if (!mayPass(*broken) || breaks >= mostBreaks)
            throw TransportError(*broken);
        const std::chrono::milliseconds wait = 1s * (1 << breaks);
        co_await pause(*clock, wait, stop);
    }
    Log::info(Log::Category::AIProvider, "Model pull complete: %{public}s"_L1, {model});
}

} // namespace morvane
