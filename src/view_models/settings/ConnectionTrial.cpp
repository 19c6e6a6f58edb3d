#include "view_models/settings/ConnectionTrial.h"

#include "ai/contract/ProviderError.h"
#include "ai/routing/AIRequestRouter.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Finding = ConnectionFindings::Finding;

namespace {

struct Attempt {
    std::optional<ReplyTrial> reply;
    std::optional<ProviderError> failure; // otherwise
};

QCoro::Task<Attempt> attempt(QPointer<AIRequestRouter> router, std::vector<AITool> tools,
                             std::stop_token stop)
{
    throwIfStopped(stop);
    if (!router)
        throw CancelledError();
    Attempt outcome;
    try {
        const ReplyTrial reply =
            co_await router->tryReply(router->settingsConfiguration(), std::move(tools), stop);
        outcome.reply = reply;
    } catch (const ProviderError &error) {
        outcome.failure = error;
    }
    throwIfStopped(stop);
    co_return outcome;
}

QString wordsOf(const ProviderError &error)
{
    const ErrorPresentation shown = presentationOf(std::make_exception_ptr(error));
    return shown.quotation.isEmpty() ? shown.message : shown.message + u' ' + shown.quotation;
}

Finding streaming(const Attempt &tried)
{
    const QString title = u"Streaming"_s;
    if (tried.failure)
        return {title, wordsOf(*tried.failure), false};
    return tried.reply->cameInPieces
               ? Finding{title, u"Replies appear as they are written."_s, true}
               : Finding{title, u"Replies appear only once they are complete."_s, false};
}

Finding tools(const Attempt &tried)
{
    const QString title = u"Abilities"_s;
    if (tried.failure && tried.failure->isToolRejection())
        return {title, u"The server takes none, so chats run without them."_s, false};
    if (tried.failure)
        return {title, wordsOf(*tried.failure), false};
    return {title,
            tried.reply->calledTool ? u"The model uses them when asked."_s
                                    : u"The server takes them, but the model used none when asked."_s,
            tried.reply->calledTool};
}

} // namespace

QCoro::Task<> ConnectionTrial::run(QPointer<AIRequestRouter> router, Tools wanted, Report report,
                                   std::stop_token stop)
{
    co_await router->testConnection(router->settingsConfiguration(), stop);
    throwIfStopped(stop);
    report({u"Reply"_s, u"The model answers."_s, true});

    Attempt withTools;
    if (wanted == Tools::tried) {
        std::vector<AITool> offered{AIConnectionTesting::testTool()};
        withTools = co_await attempt(router, std::move(offered), stop);
    }
    Attempt plain = withTools;
    if (!withTools.reply)
        plain = co_await attempt(router, std::vector<AITool>(), stop);
    report(streaming(plain));
    if (wanted == Tools::tried)
        report(tools(withTools));

    if (!router)
        throw CancelledError();
    const std::optional<bool> sees = co_await router->seesImages(stop);
    throwIfStopped(stop);
    if (sees)
        report({u"Pictures"_s, *sees ? u"The model sees them."_s : u"The model can't see them."_s, *sees});
}

} // namespace morvane
