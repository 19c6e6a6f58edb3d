#include "ai/agent/AgentRun.h"

#include "ai/agent/ReplyPhrases.h"
#include "ai/contract/ProviderError.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"
#include "utils/text/ThinkingTags.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView search{"search_web"};
constexpr QLatin1StringView schedule{"create_calendar_event"};

QString userWordsIn(const std::vector<AIMessage> &messages)
{
    QStringList words;
    for (const AIMessage &message : messages) {
        if (message.role == AIMessage::Role::user)
            words.append(message.content);
    }
    return words.join(u'\n');
}

std::shared_ptr<TurnContext> contextOf(const AgentLoop::Turn &turn)
{
    return TurnContext::begin(turn.attendance, turn.scopeKey,
                              turn.memoryAllowed ? TurnContext::Notes::kept : TurnContext::Notes::notKept,
                              turn.userWords.value_or(userWordsIn(turn.messages)), turn.messages);
}

// A server that can't take tools says so with an error of its own.
bool rejectsTools(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const ProviderError &error) {
        return error.isToolRejection();
    } catch (...) {
        return false;
    }
}

} // namespace

AgentRun::AgentRun(AgentLoop::Turn turn, std::shared_ptr<AIProvider> provider, ToolRegistry &registry,
                   Producer producer)
    : m_messages(turn.messages)
    , m_configuration(turn.configuration)
    , m_tools(turn.tools)
    , m_maxRounds(turn.maxRounds)
    , m_context(contextOf(turn))
    , m_provider(std::move(provider))
    , m_registry(&registry)
    , m_onCarrying(std::move(turn.onCarrying))
    , m_onRecorded(std::move(turn.onRecorded))
    , m_producer(std::move(producer))
    , m_stop(m_producer.stopToken())
{
    for (const AITool &tool : m_tools)
        m_allowed.insert(tool.name);
}

QCoro::Task<> AgentRun::play()
{
    bool goesOn = true;
    while (goesOn) {
        ++m_roundCount;
        m_round = {};
        std::exception_ptr failure;
        try {
            co_await readRound();
        } catch (...) {
            failure = std::current_exception();
        }
        if (failure) {
            retryWithoutTools(failure);
        } else if (!m_round.calls.empty() && !m_isFinal) {
            co_await runCalls();
            if (m_roundCount >= m_maxRounds)
                askForFinalAnswer();
        } else {
            goesOn = correctsReply();
        }
    }
    if (m_round.text.isEmpty())
        throw ProviderError(ProviderError::Plain::emptyResponse);
    if (m_round.truncated)
        m_producer.yield(Agent::TruncatedByTokenLimit{});
}

QCoro::Task<> AgentRun::readRound()
{
    auto events = m_provider->streamReply(m_messages, m_configuration, m_tools);
    while (const auto event = co_await events.next(m_stop)) {
        if (const auto *text = std::get_if<AIStream::Text>(&*event)) {
            if (std::exchange(m_owesRejection, false)) // now there is an answer without them
                m_producer.yield(Agent::ToolsRejected{});
            m_round.text += text->piece;
            m_producer.yield(Agent::Text{text->piece});
        } else if (const auto *calls = std::get_if<AIStream::ToolCalls>(&*event)) {
            m_round.calls.insert(m_round.calls.end(), calls->calls.begin(), calls->calls.end());
        } else if (std::holds_alternative<AIStream::Thinking>(*event)) {
            m_producer.yield(Agent::Thinking{});
        } else if (std::holds_alternative<AIStream::Respelled>(*event)) {
            m_configuration.mayRespell = false; // for the rest of the turn
        } else if (const auto *recorded = std::get_if<AIStream::Recorded>(&*event)) {
            if (m_onRecorded)
                m_onRecorded(recorded->row);
        } else {
            m_round.truncated = true;
        }
    }
}

QCoro::Task<> AgentRun::runCalls()
{
    m_messages.push_back(
        {.role = AIMessage::Role::assistant, .content = answer(), .toolCalls = m_round.calls});
    m_hasCalled = true;
    takeBack(); // what a model writes ahead of a call is no part of the answer
    for (const AIToolCall &call : m_round.calls) {
        throwIfStopped(m_stop);
        co_await runCall(call);
    }
    carryWhatCameIn();
}

QCoro::Task<> AgentRun::runCall(AIToolCall call)
{
    QString answer =
        u"Error: The "_s + call.name +
        u" ability is not available in this conversation. Do not call it again; answer with what you "
        "have."_s;
    if (m_allowed.contains(call.name)) {
        if (!m_registry)
            throw CancelledError();
        m_producer.yield(Agent::ToolStarted{call});
        const AIToolResult result = co_await m_registry->dispatch(call, m_context, m_stop);
        throwIfStopped(m_stop);
        m_used.insert(call.name);
        m_producer.yield(Agent::ToolFinished{call, result});
        answer = result.content;
    }
    m_messages.push_back(
        {.role = AIMessage::Role::tool, .content = answer, .toolCallID = call.id, .toolName = call.name});
}

void AgentRun::askForFinalAnswer()
{
    Log::info(Log::Category::AIProvider, "Agent loop hit its round ceiling; requesting a final answer"_L1);
    say(AIMessage::Role::system,
        u"You have used all available tool calls for this message. Answer now with what you have. If it is "
        "incomplete, say what is missing rather than asking to continue."_s);
    m_tools.clear();
    m_isFinal = true;
}

bool AgentRun::correctsReply()
{
    if (!m_searchCorrected && offers(search) && ReplyPhrases::refusesSearch(answer())) {
        Log::info(Log::Category::AIProvider,
                  "Reply refused a search it could have made; retrying with a correction"_L1);
        takeBack();
        say(AIMessage::Role::assistant, answer());
        say(AIMessage::Role::system,
            u"Correction: you CAN look that up. The search_web tool is available on this request. Call "
            u"search_web "
            "now with a query for the user's question. Do not apologize and do not decline again."_s);
        m_searchCorrected = true;
        return true;
    }
    if (!m_claimCorrected && m_allowed.contains(schedule) && !m_used.contains(schedule) &&
        ReplyPhrases::claimsScheduling(answer())) {
        Log::info(Log::Category::AIProvider,
                  "Reply claimed an action no tool performed; retrying with a correction"_L1);
        takeBack();
        say(AIMessage::Role::assistant, answer());
        say(AIMessage::Role::system, u"Correction: you said you scheduled something, but you did not call "
                                     u"any tool, so nothing actually "
                                     "happened. If the user asked you to schedule an event, call "
                                     "create_calendar_event NOW. If they didn't, "
                                     "restate your reply without claiming you did it."_s);
        m_claimCorrected = true;
        return true;
    }
    return false;
}

// A server that has called a tool in this turn takes them, and an answer that was begun gets no second one.
void AgentRun::retryWithoutTools(const std::exception_ptr &failure)
{
    if (m_tools.empty() || m_hasCalled || !m_round.text.isEmpty() || !rejectsTools(failure))
        std::rethrow_exception(failure);
    Log::info(Log::Category::AIProvider, "Endpoint rejected tools; retrying without them"_L1);
    say(AIMessage::Role::system,
        u"Correction: the model server running you does not support tools, so none of the abilities "
        u"described "
        "above are available in this conversation. You cannot open links, search the web, read the screen, "
        "or take "
        "any action. If the request needs one of those, say you can't and suggest the user paste the content "
        "directly. For anything current — scores, news, prices, dates — do not state a specific answer, "
        "because "
        "you cannot check it; a made-up specific answer is far worse than saying you can't look it up."_s);
    m_tools.clear();
    m_owesRejection = true;
    ++m_roundCount;
}

// The results stand in every later request of this turn, so those are judged and recorded with them.
void AgentRun::carryWhatCameIn()
{
    const SensitiveDataSet carrying = m_configuration.carrying | m_context->takenIn;
    if (carrying == m_configuration.carrying)
        return;
    m_configuration.carrying = carrying;
    if (m_onCarrying)
        m_onCarrying(carrying);
}

void AgentRun::takeBack()
{
    if (!m_round.text.isEmpty())
        m_producer.yield(Agent::RetractText{Text::characterCount(m_round.text)});
}

void AgentRun::say(AIMessage::Role role, const QString &text)
{
    m_messages.push_back({.role = role, .content = text});
}

// What a model thought is neither judged as its answer nor sent back to it.
QString AgentRun::answer() const
{
    return ThinkingTags::answer(m_round.text);
}

bool AgentRun::offers(QLatin1StringView tool) const
{
    return std::any_of(m_tools.begin(), m_tools.end(), [tool](const AITool &t) { return t.name == tool; });
}

} // namespace morvane
