#include "ai/providers/OpenAICompatibleProvider.h"

#include "ai/contract/ProviderError.h"
#include "ai/providers/ChatCompletionRequest.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ReplyLines.h"
#include "ai/providers/RequestStop.h"
#include "ai/providers/StreamedReply.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

#include <functional>

namespace morvane {

using namespace Qt::StringLiterals;
using OpenAIStreamParser::Completion;
using Form = ChatCompletionRequest::Form;
using Plain = ProviderError::Plain;

namespace {

// What one request needs, shared by the coroutines that carry it out.
struct Question {
    std::shared_ptr<HttpSession> session;
    std::vector<AIMessage> messages;
    AIConfiguration configuration;
    std::vector<AITool> tools;
    std::shared_ptr<std::map<std::pair<QString, QString>, ChatSpelling>> spellings;
    std::function<void()> onRespelled = [] {}; // told when it goes once more, which it may no more then

    [[nodiscard]] ChatSpelling &spelling() const
    {
        return (*spellings)[{configuration.baseURLString, configuration.model}];
    }
};
using SharedQuestion = std::shared_ptr<Question>;

void note(QLatin1StringView line)
{
    Log::info(Log::Category::AIProvider, line);
}

void throwUnlessConfigured(const AIConfiguration &configuration)
{
    if (Text::trimmedBlanks(QStringView(configuration.model)).isEmpty())
        throw ProviderError(Plain::notConfigured);
}

HttpRequest makeRequest(const Question &question, Form form)
{
    return ChatCompletionRequest::make(question.messages, question.configuration, question.tools, form,
                                       question.spelling());
}

QCoro::Task<HttpResponse> sendOnce(SharedQuestion question, HttpRequest request, std::stop_token stop)
{
    auto response = co_await question->session->send(std::move(request), stop);
    co_return co_await ProviderFailure::validated(std::move(response), stop);
}

// Whether a refusal names what it refuses. What it tells holds for every later request to that place.
bool learnsFrom(const ProviderError &refusal, const Question &question)
{
    const auto learned = question.spelling().after(refusal, question.messages);
    if (learned)
        question.spelling() = *learned;
    return learned.has_value();
}

// A refused question goes once more in the spelling that was learned from the refusal.
QCoro::Task<HttpResponse> open(SharedQuestion question, HttpRequest request, Form form, std::stop_token stop)
{
    while (true) {
        try {
            co_return co_await sendOnce(question, std::move(request), stop);
        } catch (const ProviderError &refusal) {
            if (!learnsFrom(refusal, *question) || !question->configuration.mayRespell)
                throw;
        }
        question->configuration.mayRespell = false;
        question->onRespelled();
        note("Endpoint wants another spelling; asking once more"_L1);
        request = makeRequest(*question, form);
    }
}

bool spentOnThinking(const Completion &completion)
{
    return completion.hasReasoning && completion.finishReason == OpenAIStreamParser::tokenLimit;
}

QCoro::Task<Completion> fetchWhole(SharedQuestion question, std::stop_token stop)
{
    HttpRequest request = makeRequest(*question, Form::whole);
    Log::info(Log::Category::AIProvider, "Starting non-streaming request to model %{public}s"_L1,
              {question->configuration.model});
    auto response = co_await open(question, std::move(request), Form::whole, stop);
    const QByteArray body =
        co_await readBody(std::move(response), OpenAICompatibleProvider::largestBody, stop);
    auto completion = OpenAIStreamParser::parseBody(body);
    if (completion.isEmpty() && spentOnThinking(completion))
        throw ProviderError(Plain::limitSpentThinking);
    if (completion.isEmpty())
        throw ProviderError(Plain::emptyResponse);
    note("Non-streaming request completed"_L1);
    co_return completion;
}

// What to do about a stream that held no reply: it may have been a plain body, else the question is put once
// more without streaming.
QCoro::Task<> answerOtherwise(SharedQuestion question, std::shared_ptr<StreamedReply> reply,
                              StreamedReply::Events events)
{
    if (const auto completion = reply->plainBody()) {
        yieldCompletion(*completion, events);
        co_return;
    }
    note("Stream yielded no tokens; retrying non-streaming"_L1);
    const auto completion = co_await fetchWhole(question, events.stopToken());
    yieldCompletion(completion, events);
}

QCoro::Task<std::shared_ptr<StreamedReply>> readStreamed(SharedQuestion question,
                                                         StreamedReply::Events events, std::stop_token stop)
{
    HttpRequest request = makeRequest(*question, Form::streamed);
    Log::info(Log::Category::AIProvider, "Starting streamed request to model %{public}s"_L1,
              {question->configuration.model});
    const RequestStop requestStop(stop);
    auto response = co_await open(question, std::move(request), Form::streamed, requestStop.token());
    const auto reply = std::make_shared<StreamedReply>();
    ReplyLines::Reader reader = [reply, events](QByteArrayView line) mutable {
        return reply->add(line, events);
    };
    co_await ReplyLines::read(std::move(response), std::move(reader), stop);
    throwIfStopped(stop);
    reply->finish(events);
    co_return std::shared_ptr<StreamedReply>(reply);
}

QCoro::Task<> answerStreamed(SharedQuestion question, StreamedReply::Events events)
{
    const auto reply = co_await readStreamed(question, events, events.stopToken());
    if (!reply->hasContent())
        co_await answerOtherwise(question, reply, events);
    note("Streamed request completed"_L1);
}

QCoro::Task<> answerWhole(SharedQuestion question, StreamedReply::Events events)
{
    const auto completion = co_await fetchWhole(question, events.stopToken());
    yieldCompletion(completion, events);
}

QCoro::Task<> answer(SharedQuestion question, StreamedReply::Events events)
{
    try {
        throwUnlessConfigured(question->configuration);
        if (question->configuration.preferStreaming)
            co_await answerStreamed(question, events);
        else
            co_await answerWhole(question, events);
        events.finish();
    } catch (...) {
        events.fail(std::make_exception_ptr(ProviderFailure::mapped(std::current_exception())));
    }
}

QCoro::Task<QString> testedReply(SharedQuestion question, std::stop_token stop)
{
    try {
        throwUnlessConfigured(question->configuration);
        auto completion = co_await fetchWhole(question, stop);
        if (completion.text.isEmpty())
            throw ProviderError(Plain::emptyResponse);
        co_return completion.text;
    } catch (const ProviderError &error) {
        // Eight tokens are spent soon; the model is there and answers.
        if (!error.is(Plain::limitSpentThinking))
            throw;
    } catch (...) {
        throw ProviderFailure::mapped(std::current_exception());
    }
    co_return QString();
}

// Nobody reads the events, and no second question is put: what the first one brings is the result.
QCoro::Task<ReplyTrial> triedReply(SharedQuestion question, std::stop_token stop)
{
    const StreamedReply::Events unread = AsyncStream<AIStreamEvent>::make().second;
    try {
        throwUnlessConfigured(question->configuration);
        const auto reply = co_await readStreamed(question, unread, stop);
        if (reply->hasContent())
            co_return ReplyTrial{true, reply->hasCalls()};
        const auto whole = reply->plainBody();
        if (!whole)
            throw ProviderError(Plain::emptyResponse);
        co_return ReplyTrial{false, !whole->toolCalls.empty()};
    } catch (...) {
        co_return ProviderFailure::trialEndedBy(std::current_exception());
    }
}

} // namespace

OpenAICompatibleProvider::OpenAICompatibleProvider(HttpSessionProviding &network,
                                                   std::shared_ptr<HttpSession> injectedSession)
    : m_network(network)
    , m_injectedSession(std::move(injectedSession))
{}

AsyncStream<AIStreamEvent> OpenAICompatibleProvider::streamReply(std::vector<AIMessage> messages,
                                                                 AIConfiguration configuration,
                                                                 std::vector<AITool> tools)
{
    auto session = sessionFor(configuration);
    auto [stream, events] = AsyncStream<AIStreamEvent>::make();
    answer(std::make_shared<Question>(Question{
               std::move(session), std::move(messages), std::move(configuration), std::move(tools),
               m_spellings, [producer = events]() mutable { producer.yield(AIStream::Respelled{}); }}),
           events);
    return std::move(stream);
}

QCoro::Task<QString> OpenAICompatibleProvider::testConnection(AIConfiguration configuration,
                                                              std::stop_token stop)
{
    configuration.maxOutputTokens = 8;
    configuration.requestTimeout = 20.0;
    auto session = sessionFor(configuration);
    const AIMessage message{AIMessage::Role::user, testMessage(), {}, {}, {}, {}};
    return testedReply(std::make_shared<Question>(Question{
                           std::move(session), {message}, std::move(configuration), {}, m_spellings}),
                       std::move(stop));
}

QCoro::Task<ReplyTrial> OpenAICompatibleProvider::tryReply(AIConfiguration configuration,
                                                           std::vector<AITool> tools, std::stop_token stop)
{
    configuration.maxOutputTokens = trialTokens;
    auto session = sessionFor(configuration);
    auto messages = trialMessages(tools);
    return triedReply(
        std::make_shared<Question>(Question{std::move(session), std::move(messages), std::move(configuration),
                                            std::move(tools), m_spellings}),
        std::move(stop));
}

std::shared_ptr<HttpSession> OpenAICompatibleProvider::sessionFor(const AIConfiguration &configuration) const
{
    return m_injectedSession ? m_injectedSession
                             : m_network.session(EgressFeature::aiModel, configuration.carrying);
}

} // namespace morvane
