#pragma once

#include "ai/contract/AIMessage.h"
#include "ai/tools/AbilityCatalogue.h"
#include "ai/tools/ToolGate.h"
#include "ai/tools/ToolRunner.h"
#include "services/WebAccessing.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <set>
#include <stop_token>

namespace morvane {

class Clock;
class DesktopActing;
class MemoryStore;
class ScreenGlanceError;
class ScreenGlancing;
class SettingsStore;

// Stands between a model's call and its effect: checks the call against the settings, the turn and the
// limits, asks the person where that is required, runs it, and hands back one text. GUI thread.
class ToolRegistry final : public QObject {
    Q_OBJECT
public:
    // Outlive the registry.
    struct Services {
        SettingsStore &settings;
        MemoryStore &memory;
        WebAccessing &web;
        Clock &clock;
        DesktopActing *desktop = nullptr;                // absent: this build has no desktop actions
        std::weak_ptr<ScreenGlancing> screenGlance = {}; // absent: this build can't read the screen
    };

    // Suspends for as long as the person takes.
    using ApprovalHandler =
        std::function<QCoro::Task<ApprovalAnswer>(QString verb, AIToolCall call, AITool tool)>;

    // The window's side. Each may be absent.
    struct Hooks {
        ApprovalHandler approvalHandler;
        ApprovalHandler chatWideApprovalHandler; // offers a yes for the whole chat as well
        // A permission of the system needs the person's attention.
        std::function<void(const UserPresentableError &error)> permissionAttentionHandler;
        // Told of every call that was run, whatever became of it.
        std::function<void(const AIToolCall &call, const AIToolResult &result)> onToolCompleted;
    };

    explicit ToolRegistry(Services services, QObject *parent = nullptr);

    void setHooks(Hooks hooks) { m_hooks = std::move(hooks); }

    // The tools to offer to a model, in their order.
    [[nodiscard]] std::vector<AITool> availableTools() const;

    // Whether the switch of a tool is on and this build has what it needs. The switch over all abilities is
    // not asked, so a turn under way keeps what it was offered.
    [[nodiscard]] bool isAvailable(QStringView name) const;

    // For Settings: what to do about a tool that isn't available; nothing for one that is.
    [[nodiscard]] std::optional<QString> unavailableReason(QStringView name) const;
    [[nodiscard]] std::optional<QString> relaunchHint(QStringView name) const;

    // Carries out one call of a turn. Never fails: a refusal or a failure is a result that the model reads.
    // Without a context nobody is there to answer and no notes are kept.
    [[nodiscard]] QCoro::Task<AIToolResult> dispatch(AIToolCall call, std::shared_ptr<TurnContext> turn = {},
                                                     std::stop_token stop = {});

    // Chats in which a search needs no further approval. Not saved.
    [[nodiscard]] const std::set<QString> &searchAllowedChats() const { return m_searchAllowedChats; }

    // The screen can't be read before the program is started anew.
    [[nodiscard]] bool screenGlanceNeedsRelaunch() const { return m_screenGlanceNeedsRelaunch; }

Q_SIGNALS:
    void availabilityChanged(); // of any tool, or of a hint

private:
    using Self = QPointer<ToolRegistry>; // a dispatch may outlive its registry
    using Turn = std::shared_ptr<TurnContext>;

    static QCoro::Task<AIToolResult> carryOut(Self self, AIToolCall call, Turn turn, std::stop_token stop);
    static QCoro::Task<ToolOutcome> outcomeOf(Self self, AIToolCall call, Turn turn, std::stop_token stop);
    // Nothing when the person says yes, else why not.
    static QCoro::Task<std::optional<ToolOutcome>> approve(Self self, Ability ability, ToolGate::Ask ask,
                                                           AIToolCall call, Turn turn);
    static QCoro::Task<ToolOutcome> run(Self self, Ability ability, AIToolCall call, QDateTime asked,
                                        Turn turn, std::stop_token stop);

    [[nodiscard]] bool isAvailable(Ability ability) const;
    [[nodiscard]] bool canSearch() const;
    // Who would answer a search now. A yes for a chat named the service that the words go to, so it ends when
    // that is another one.
    WebAccessing::SearchService searchService();
    [[nodiscard]] QString reasonFor(Ability ability) const;
    [[nodiscard]] ToolGate::Decision judge(Ability ability, const AIToolCall &call, TurnContext &turn) const;
    [[nodiscard]] ToolOutcome explain(const AIToolCall &call, const std::exception_ptr &failure);
    [[nodiscard]] ApprovalHandler handlerFor(const ToolGate::Ask &ask) const;
    void noteScreenProblem(const ScreenGlanceError &error);
    [[nodiscard]] ToolRunner::Services runnerServices(const QDateTime &asked) const;

    Services m_services;
    Hooks m_hooks;
    std::set<QString> m_searchAllowedChats;
    WebAccessing::SearchService m_allowedService = WebAccessing::SearchService::none; // of those
    bool m_screenGlanceNeedsRelaunch = false;
};

} // namespace morvane
