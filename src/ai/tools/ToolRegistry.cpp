#include "ai/tools/ToolRegistry.h"

#include "ai/tools/PageRescue.h"
#include "ai/tools/ToolRunner.h"
#include "async/Clock.h"
#include "persistence/SettingsStore.h"
#include "services/ScreenGlanceError.h"
#include "services/WebAccessError.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString unexplained()
{
    return u"That didn't work."_s;
}

// Why a page could not be read; nothing for a failure of another kind.
std::optional<QString> pageProblem(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const WebAccessError &error) {
        return ToolFailure::wordsOf(error);
    } catch (...) {
        return std::nullopt;
    }
}

// Nothing when nobody could be asked, also because the window went away with its question.
QCoro::Task<std::optional<ApprovalAnswer>> answerOf(ToolRegistry::ApprovalHandler ask, QString verb,
                                                    AIToolCall call, AITool tool)
{
    if (!ask)
        co_return std::nullopt;
    try {
        const ApprovalAnswer answer = co_await ask(verb, call, tool);
        co_return answer;
    } catch (const std::exception &) {
        co_return std::nullopt;
    }
}

} // namespace

ToolRegistry::ToolRegistry(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
{
    const SettingsStore *settings = &m_services.settings;
    for (const auto changed :
         {&SettingsStore::abilitiesEnabledChanged, &SettingsStore::memoryEnabledChanged,
          &SettingsStore::webAccessEnabledChanged, &SettingsStore::screenAwarenessEnabledChanged,
          &SettingsStore::desktopActionsEnabledChanged})
        connect(settings, changed, this, &ToolRegistry::availabilityChanged);
}

QCoro::Task<AIToolResult> ToolRegistry::dispatch(AIToolCall call, Turn turn, std::stop_token stop)
{
    return carryOut(this, std::move(call), turn ? std::move(turn) : std::make_shared<TurnContext>(),
                    std::move(stop));
}

QCoro::Task<AIToolResult> ToolRegistry::carryOut(Self self, AIToolCall call, Turn turn, std::stop_token stop)
{
    const ToolOutcome outcome = co_await outcomeOf(self, call, turn, stop);
    co_return AIToolResult{call.id, call.name, outcome.content, outcome.isError, outcome.isDeclined};
}

QCoro::Task<ToolOutcome> ToolRegistry::outcomeOf(Self self, AIToolCall call, Turn turn, std::stop_token stop)
{
    const auto ability = AbilityCatalogue::named(call.name);
    if (!ability)
        co_return ToolFailure::because(u"There is no tool called "_s + call.name + u'.');
    const QDateTime asked = self->m_services.clock.now();
    const bool searches = *ability == Ability::searchWeb;
    const auto named = searches ? self->searchService() : WebAccessing::SearchService::none;
    const ToolGate::Decision decision = self->judge(*ability, call, *turn);
    if (const auto *refusal = std::get_if<ToolGate::Refuse>(&decision))
        co_return ToolFailure::because(refusal->reason);
    if (const auto *ask = std::get_if<ToolGate::Ask>(&decision)) {
        const std::optional<ToolOutcome> refusal = co_await approve(self, *ability, *ask, call, turn);
        if (refusal)
            co_return ToolOutcome(*refusal);
    }
    if (!self || stop.stop_requested()) // a yes that comes with the end of its turn starts nothing
        co_return ToolFailure::because(unexplained());
    if (searches && self->searchService() != named)
        co_return ToolFailure::because(
            u"The search service was changed before this search began, so nothing was searched. Call "
            "search_web again if it is still needed."_s);
    const ToolOutcome outcome = co_await run(self, *ability, call, asked, turn, stop);
    if (self && self->m_hooks.onToolCompleted)
        self->m_hooks.onToolCompleted(call, {call.id, call.name, outcome.content, outcome.isError});
    co_return ToolOutcome(outcome);
}

ToolGate::Decision ToolRegistry::judge(Ability ability, const AIToolCall &call, TurnContext &turn) const
{
    // Before availability: web content always closes the screen, whatever the switches say.
    if (ability == Ability::lookAtScreen && turn.webContentConsumed)
        return ToolGate::Refuse{
            u"Screen reading is not available in a turn that has already read web content. Ask "
            "the user to paste what they see instead."_s};
    if (!isAvailable(ability))
        return ToolGate::Refuse{u"The "_s + call.name + u" ability is unavailable. "_s + reasonFor(ability)};
    return ToolGate::decide(ability, ToolArguments(call.argumentsJSON), turn,
                            {m_searchAllowedChats, m_services.memory});
}

QCoro::Task<std::optional<ToolOutcome>> ToolRegistry::approve(Self self, Ability ability, ToolGate::Ask ask,
                                                              AIToolCall call, Turn turn)
{
    if (turn->unattended)
        co_return ToolFailure::because(
            u"This action needs the user's approval and nobody is here to give it. Do "
            "not retry; finish with what you have."_s);
    const ApprovalHandler handler = self->handlerFor(ask);
    const AITool tool = AbilityCatalogue::definition(ability);
    const std::optional<ApprovalAnswer> answer = co_await answerOf(handler, ask.verb, call, tool);
    if (!answer)
        co_return ToolFailure::because(
            u"This action needs the user's approval and none could be requested."_s);
    if (*answer == ApprovalAnswer::declined) {
        Log::info(Log::Category::AIProvider, "Tool %{public}s declined by the user"_L1, {call.name});
        ToolOutcome refusal =
            ToolFailure::because(u"The user declined. Do not try again; ask them what they'd prefer."_s);
        refusal.isDeclined = true;
        co_return refusal;
    }
    if (*answer == ApprovalAnswer::allowedForChat && ask.offersChatWideYes && turn->chatID && self)
        self->m_searchAllowedChats.insert(*turn->chatID);
    turn->approvedOnce.insert(call.name);
    co_return std::nullopt;
}

WebAccessing::SearchService ToolRegistry::searchService()
{
    const auto service = m_services.web.searchService();
    if (std::exchange(m_allowedService, service) != service)
        m_searchAllowedChats.clear();
    return service;
}

ToolRegistry::ApprovalHandler ToolRegistry::handlerFor(const ToolGate::Ask &ask) const
{
    const bool isChatWide =
        ask.offersChatWideYes && m_hooks.approvalHandler && m_hooks.chatWideApprovalHandler;
    return isChatWide ? m_hooks.chatWideApprovalHandler : m_hooks.approvalHandler;
}

QCoro::Task<ToolOutcome> ToolRegistry::run(Self self, Ability ability, AIToolCall call, QDateTime asked,
                                           Turn turn, std::stop_token stop)
{
    const ToolArguments arguments(call.argumentsJSON);
    std::exception_ptr failure;
    try {
        ToolOutcome outcome =
            co_await ToolRunner::run(ability, arguments, turn, self->runnerServices(asked), stop);
        co_return outcome;
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self || stop.stop_requested())
        co_return ToolFailure::because(unexplained());
    const auto problem = pageProblem(failure);
    if (ability != Ability::readWebPage || !problem)
        co_return self->explain(call, failure);
    if (!self->isAvailable(Ability::searchWeb))
        co_return ToolFailure::because(*problem);
    (void)self->searchService();
    const bool allowsSearch = turn->chatID && self->m_searchAllowedChats.contains(*turn->chatID);
    const auto query =
        allowsSearch ? PageRescue::query(arguments.text("url"_L1).value_or(QString())) : std::nullopt;
    ToolOutcome rescued = co_await PageRescue::outcome(*problem, query, turn, &self->m_services.web, stop);
    co_return rescued;
}

ToolRunner::Services ToolRegistry::runnerServices(const QDateTime &asked) const
{
    return {.memory = &m_services.memory,
            .web = &m_services.web,
            .desktop = m_services.desktop,
            .screenGlance = m_services.screenGlance,
            .asked = asked,
            .screenTextLimit = m_services.settings.maxExtractedCharacters()};
}

ToolOutcome ToolRegistry::explain(const AIToolCall &call, const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const ScreenGlanceError &error) {
        noteScreenProblem(error);
        return ToolFailure::because(ToolFailure::wordsOf(error));
    } catch (const UserPresentableError &error) {
        return ToolFailure::because(ToolFailure::wordsOf(error));
    } catch (const std::exception &error) {
        Log::error(Log::Category::AIProvider, "Tool %{public}s failed: %s"_L1, {call.name, error.what()});
    } catch (...) {
        Log::error(Log::Category::AIProvider, "Tool %{public}s failed: %s"_L1, {call.name, "unknown"});
    }
    return ToolFailure::because(unexplained());
}

void ToolRegistry::noteScreenProblem(const ScreenGlanceError &error)
{
    switch (error.reason()) {
    case ScreenGlanceError::Case::needsRelaunch:
        m_screenGlanceNeedsRelaunch = true;
        Q_EMIT availabilityChanged();
        break;
    case ScreenGlanceError::Case::permissionNeeded:
        break;
    case ScreenGlanceError::Case::captureFailed:
    case ScreenGlanceError::Case::noTextFound:
    case ScreenGlanceError::Case::hiddenByFullScreen:
    case ScreenGlanceError::Case::noneHere:
        return;
    }
    if (m_hooks.permissionAttentionHandler)
        m_hooks.permissionAttentionHandler(error);
}

} // namespace morvane
