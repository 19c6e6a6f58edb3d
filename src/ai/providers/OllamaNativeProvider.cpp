#include "ai/providers/OllamaNativeProvider.h"

#include "ai/contract/ProviderError.h"
#include "ai/providers/OllamaProbe.h"
#include "ai/providers/OllamaReply.h"
#include "ai/providers/OllamaRequest.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/RequestStop.h"
#include "ai/providers/ServerWords.h"
#include "utils/log/Log.h"
#include "utils/text/Json.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using OllamaRequest::Thinking;
using Plain = ProviderError::Plain;

// What one request needs, shared by the coroutines that carry it out.
struct OllamaQuestion {
    std::shared_ptr<HttpSession> session;
    std::optional<OllamaProbe> capabilities; // absent when the cache knows, or for a bad address
    std::shared_ptr<std::map<QString, bool>> thinkingCache;
    std::vector<AIMessage> messages;
    AIConfiguration configuration;
    QString model;
    std::vector<AITool> tools;
};

namespace {

using SharedQuestion = std::shared_ptr<const OllamaQuestion>;

std::optional<QStringList> capabilitiesIn(const QJsonObject &shown)
{
    const auto list = Json::array(shown, "capabilities"_L1);
    if (!list)
        return std::nullopt;
    QStringList capabilities;
    for (const QJsonValue capability : *list) {
        if (capability.isString())
            capabilities.append(capability.toString());
    }
    return capabilities;
}

// Whatever stands in a field that names another place counts, not only a text: private data follows this.
bool namesAnotherPlace(const QJsonValue &value)
{
    return !value.isUndefined() && !value.isNull() && value != QJsonValue(QString());
}

std::optional<std::vector<OllamaModel>> modelsIn(const QJsonObject &tags)
{
    const QJsonValue list = tags.value("models"_L1);
    if (!list.isArray() && !list.isNull()) // an empty list is null to some versions
        return std::nullopt;
    std::vector<OllamaModel> models;
    for (const QJsonValue entry : list.toArray()) {
        const QString name = entry["name"_L1].toString(entry["model"_L1].toString());
        if (!name.isEmpty())
            models.push_back({name, namesAnotherPlace(entry["remote_model"_L1]) ||
                                        namesAnotherPlace(entry["remote_host"_L1])});
    }
    return models;
}

// What an answer tells, as `read` finds it there.
template <typename Told>
ProbeAnswer<Told> toldIn(const OllamaProbe::Answer &answer,
                         std::optional<Told> (*read)(const QJsonObject &object))
{
    return {answer.object ? read(*answer.object) : std::nullopt, answer.wasHeard};
}

QCoro::Task<Thinking> thinkingOf(SharedQuestion question, std::stop_token stop)
{
    std::map<QString, bool> &cache = *question->thinkingCache;
    if (question->capabilities) {
        const auto answer = co_await OllamaProbe::answer(question->capabilities, stop);
        if (const auto capabilities = toldIn(answer, capabilitiesIn).told)
            cache.insert_or_assign(question->model, capabilities->contains("thinking"_L1));
    }
    const auto known = cache.find(question->model);
    const bool thinks = known == cache.end() ? question->configuration.thinksLonger : known->second;
    co_return thinks ? Thinking::on : Thinking::off;
}

QCoro::Task<HttpResponse> validated(HttpResponse response, std::stop_token stop)
{
    const int status = response.status;
    if (ProviderFailure::isSuccess(status))
        co_return std::move(response);
    const QByteArray body =
        co_await ProviderFailure::readStart(std::move(response), ProviderFailure::errorBodyLimit, stop);
    const auto object = Json::parseObject(body);
    const QString message = object ? object->value("error"_L1).toString() : QString();
    const QString words = ServerWords::of(body);
    Log::error(Log::Category::AIProvider, "Native Ollama HTTP %ld: %s"_L1, {status, message});
    for (const auto word : {"image"_L1, "vision"_L1}) {
        if (message.contains(word, Qt::CaseInsensitive))
            throw ProviderError(Plain::modelLacksVision).quoting(words);
    }
    throw ServerWords::error(status, words);
}

// True for a reply with calls.
QCoro::Task<bool> readAnswer(SharedQuestion question, OllamaReply::Events events, std::stop_token stop)
{
    const Thinking thinking = co_await thinkingOf(question, stop);
    HttpRequest request = OllamaRequest::chat(question->messages, question->configuration, question->model,
                                              question->tools, thinking);
    Log::info(Log::Category::AIProvider, "Starting native Ollama request to model %{public}s"_L1,
              {question->model});
    const RequestStop requestStop(stop);
    auto response = co_await question->session->send(std::move(request), requestStop.token());
    auto good = co_await validated(std::move(response), requestStop.token());
    const auto reply = std::make_shared<OllamaReply>();
    ReplyLines::Reader reader = [reply, events](QByteArrayView line) mutable {
        return reply->add(line, events);
    };
    co_await ReplyLines::read(std::move(good), std::move(reader), stop);
    throwIfStopped(stop);
    reply->finish(events);
    Log::info(Log::Category::AIProvider, "Native Ollama request completed"_L1);
    co_return reply->hasCalls();
}

QCoro::Task<> answer(SharedQuestion question, OllamaReply::Events events)
{
    try {
        if (question->model.isEmpty())
            throw ProviderError(Plain::notConfigured);
        co_await readAnswer(question, events, events.stopToken());
        events.finish();
    } catch (...) {
        events.fail(std::make_exception_ptr(ProviderFailure::mapped(std::current_exception())));
    }
}

// Nobody reads the events: how the reply comes is the result.
QCoro::Task<ReplyTrial> triedReply(SharedQuestion question, std::stop_token stop)
{
    const OllamaReply::Events unread = AsyncStream<AIStreamEvent>::make().second;
    try {
        if (question->model.isEmpty())
            throw ProviderError(Plain::notConfigured);
        const bool calledTool = co_await readAnswer(question, unread, stop);
        co_return ReplyTrial{true, calledTool};
    } catch (...) {
        co_return ProviderFailure::trialEndedBy(std::current_exception());
    }
}

// A name without a tag means the tag "latest".
bool lists(const std::vector<OllamaModel> &models, const QString &model)
{
    return std::any_of(models.begin(), models.end(), [&model](const OllamaModel &listed) {
        return listed.name == model || listed.name == model + ":latest"_L1;
    });
}

// Asks for the list in its own words: an error tells more than a probe's silence.
QCoro::Task<> requireListed(SharedQuestion question, std::stop_token stop)
{
    const AIConfiguration &configuration = question->configuration;
    HttpRequest request = OllamaRequest::connectionTest({configuration.baseURLString, configuration.apiKey});
    auto response = co_await question->session->send(std::move(request), stop);
    auto good = co_await ProviderFailure::validated(std::move(response), stop);
    const QByteArray body = co_await readBody(std::move(good), ReplyLines::longest, stop);
    const auto tags = Json::parseObject(body);
    const auto models = tags ? modelsIn(*tags) : std::nullopt;
    if (!models)
        throw ProviderError(Plain::malformedResponse);
    if (!lists(*models, question->model))
        throw ProviderError(Plain::modelNotListed);
}

QCoro::Task<QString> testedConnection(SharedQuestion question, std::stop_token stop)
{
    try {
        co_await requireListed(question, stop);
    } catch (...) {
        throw ProviderFailure::mapped(std::current_exception());
    }
    co_await triedReply(question, stop);
    co_return QString();
}

std::optional<QString> versionIn(const QJsonObject &object)
{
    return Json::string(object, "version"_L1);
}

template <typename Told>
QCoro::Task<ProbeAnswer<Told>> asked(std::optional<OllamaProbe> probe,
                                     std::optional<Told> (*read)(const QJsonObject &object),
                                     std::stop_token stop)
{
    const auto answer = co_await OllamaProbe::answer(std::move(probe), stop);
    co_return toldIn(answer, read);
}

} // namespace

OllamaNativeProvider::OllamaNativeProvider(HttpSessionProviding &network, KeyFor keyFor,
                                           std::shared_ptr<HttpSession> injectedSession)
    : m_network(network)
    , m_keyFor(std::move(keyFor))
    , m_injectedSession(std::move(injectedSession))
    , m_thinkingCache(std::make_shared<std::map<QString, bool>>())
{}

std::shared_ptr<const OllamaQuestion> OllamaNativeProvider::question(std::vector<AIMessage> messages,
                                                                     AIConfiguration configuration,
                                                                     std::vector<AITool> tools) const
{
    const QString model = Text::trimmedBlanks(QStringView(configuration.model)).toString();
    auto session = sessionFor(configuration.carrying);
    const OllamaServer server{configuration.baseURLString, configuration.apiKey};
    std::optional<OllamaProbe> probe;
    if (!m_thinkingCache->contains(model) && !model.isEmpty())
        probe = makeProbe([&] { return OllamaRequest::capabilities(server, model); });
    return std::make_shared<const OllamaQuestion>(
        OllamaQuestion{std::move(session), std::move(probe), m_thinkingCache, std::move(messages),
                       std::move(configuration), model, std::move(tools)});
}

AsyncStream<AIStreamEvent> OllamaNativeProvider::streamReply(std::vector<AIMessage> messages,
                                                             AIConfiguration configuration,
                                                             std::vector<AITool> tools)
{
    auto [stream, events] = AsyncStream<AIStreamEvent>::make();
    answer(question(std::move(messages), std::move(configuration), std::move(tools)), events);
    return std::move(stream);
}

QCoro::Task<QString> OllamaNativeProvider::testConnection(AIConfiguration configuration, std::stop_token stop)
{
    configuration.maxOutputTokens = 8;
    configuration.requestTimeout = 20.0;
    return testedConnection(question(trialMessages({}), std::move(configuration), {}), std::move(stop));
}

QCoro::Task<ReplyTrial> OllamaNativeProvider::tryReply(AIConfiguration configuration,
                                                       std::vector<AITool> tools, std::stop_token stop)
{
    configuration.maxOutputTokens = trialTokens;
    auto messages = trialMessages(tools);
    return triedReply(question(std::move(messages), std::move(configuration), std::move(tools)),
                      std::move(stop));
}

QCoro::Task<ProbeAnswer<QString>> OllamaNativeProvider::version(QString baseURL, std::stop_token stop)
{
    return asked(makeProbe([&] { return OllamaRequest::version(serverAt(baseURL)); }), versionIn,
                 std::move(stop));
}

QCoro::Task<ProbeAnswer<QStringList>> OllamaNativeProvider::capabilities(QString baseURL, QString model,
                                                                         std::stop_token stop)
{
    return asked(makeProbe([&] { return OllamaRequest::capabilities(serverAt(baseURL), model); }),
                 capabilitiesIn, std::move(stop));
}

QCoro::Task<ProbeAnswer<std::vector<OllamaModel>>> OllamaNativeProvider::modelList(QString baseURL,
                                                                                   std::stop_token stop)
{
    return asked(makeProbe([&] { return OllamaRequest::modelList(serverAt(baseURL)); }), modelsIn,
                 std::move(stop));
}

OllamaServer OllamaNativeProvider::serverAt(const QString &baseURL) const
{
    return {baseURL, m_keyFor ? m_keyFor(baseURL) : std::nullopt};
}

// Nothing for an address that may not be used, nor while its key can't be read.
std::optional<OllamaProbe> OllamaNativeProvider::makeProbe(const std::function<HttpRequest()> &request) const
{
    try {
        return OllamaProbe{sessionFor({}), request()};
    } catch (const UserPresentableError &) {
        return std::nullopt;
    }
}

std::shared_ptr<HttpSession> OllamaNativeProvider::sessionFor(SensitiveDataSet carrying) const
{
    return m_injectedSession ? m_injectedSession : m_network.session(EgressFeature::aiModel, carrying);
}

} // namespace morvane
