#include "ai/routing/LocalFallbackStream.h"

#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"

namespace morvane {

using namespace Qt::StringLiterals;
using LocalFallbackStream::Decisions;
using Producer = AsyncStream<AIStreamEvent>::Producer;

namespace {

// Why a private cloud gave no reply; nothing for any other failure, or when the person has seen text of one.
struct Refusal {
    QString reason;
};

// Passes a reply on. A refusal of the private cloud comes back as a value while no text has been shown;
// whatever else goes wrong is thrown.
QCoro::Task<std::optional<Refusal>> pass(AsyncStream<AIStreamEvent> reply, Producer out, Decisions decisions)
{
    bool hasShownText = false;
    try {
        while (auto event = co_await reply.next(out.stopToken())) {
            if (const auto *recorded = std::get_if<AIStream::Recorded>(&*event)) {
                decisions.noteRow(recorded->row);
                continue;
            }
            const auto *text = std::get_if<AIStream::Text>(&*event);
            hasShownText = hasShownText || (text && !text->piece.isEmpty());
            out.yield(std::move(*event));
        }
    } catch (const ProviderError &error) {
        if (const auto *unverified = std::get_if<ProviderError::EnclaveUnverified>(&error.reason()))
            decisions.noteRefusal(unverified->text);
        if (hasShownText || !error.isPrivateCloudFallback())
            throw;
        co_return std::optional(Refusal{error.userMessage()});
    }
    co_return std::nullopt;
}

QCoro::Task<> goOnLocally(PreparedRequest request, Refusal refusal, Producer out, Decisions decisions)
{
    const std::stop_token stop = out.stopToken();
    std::optional<Decisions::Place> local = co_await decisions.standby(request.configuration, stop);
    throwIfStopped(stop);
    if (!local)
        throw LocalFallbackStream::unanswered(refusal.reason);
    Log::info(Log::Category::AIProvider, "Enclave not verified; answering on the local model"_L1);
    out.yield(AIStream::Text{refusal.reason + u"\n\n"_s});
    AsyncStream<AIStreamEvent> reply = local->provider->streamReply(
        std::move(request.messages), std::move(local->configuration), std::move(request.tools));
    const std::optional<Refusal> again = co_await pass(std::move(reply), out, std::move(decisions));
    if (again)
        throw LocalFallbackStream::unanswered(again->reason);
}

QCoro::Task<> run(PreparedRequest request, std::shared_ptr<AIProvider> provider, Producer out,
                  Decisions decisions)
{
    try {
        AsyncStream<AIStreamEvent> reply =
            provider->streamReply(request.messages, request.configuration, request.tools);
        const std::optional<Refusal> refusal = co_await pass(std::move(reply), out, decisions);
        if (refusal)
            co_await goOnLocally(std::move(request), *refusal, out, std::move(decisions));
        out.finish();
    } catch (...) {
        out.fail(std::current_exception());
    }
}

} // namespace

AsyncStream<AIStreamEvent>
LocalFallbackStream::relay(PreparedRequest request, std::shared_ptr<AIProvider> provider, Decisions decisions)
{
    auto [stream, out] = AsyncStream<AIStreamEvent>::make();
    run(std::move(request), std::move(provider), out, std::move(decisions));
    return std::move(stream);
}

ProviderError LocalFallbackStream::unanswered(const QString &reason)
{
    const QString promise = VeniceAttestationVerifier::Failure::localReplyEnding();
    if (!reason.endsWith(promise))
        return ProviderError(ProviderError::PrivateCloudCouldNotAnswer{reason});
    const QString unanswered =
        u", and no model is set up on this %1, so this message was not answered. Settings > AI sets one up."_s;
    return ProviderError(ProviderError::PrivateCloudCouldNotAnswer{
        reason.chopped(promise.size()) + unanswered.arg(DesktopWords::here().device)});
}

} // namespace morvane
