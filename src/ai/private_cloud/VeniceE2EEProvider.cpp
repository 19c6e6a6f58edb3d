#include "ai/private_cloud/VeniceE2EEProvider.h"

#include "ai/contract/ProviderError.h"
#include "ai/private_cloud/SealedReply.h"
#include "ai/private_cloud/SealedRequest.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/RequestStop.h"
#include "attestation/VeniceAttestationService.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;
using Stage = ProofWatch::Stage;
using VeniceAttestationVerifier::Verified;
using Refused = VeniceAttestationVerifier::Failure;
using PlaceKind = ProofLedger::Place::Kind;

namespace {

constexpr auto category = Log::Category::AIProvider;
constexpr int tooManyRequests = 429;
constexpr int gatewayTimeout = 504;
constexpr qsizetype refusalBodyLimit = 8192; // bytes
constexpr qsizetype longestLogged = 300;     // characters of a failure, which may quote the server

// What one turn needs, shared by the coroutines that carry it out.
struct Turn {
    VeniceEnclaveSource &enclaves;
    ProofLedger &ledger;
    Clock &clock;
    QPointer<ProofWatch> watch;
    std::chrono::milliseconds proofRetryPause;
    std::shared_ptr<HttpSession> session;
    std::vector<AIMessage> messages;
    AIConfiguration configuration;
    std::vector<AITool> tools;
    SealedReply::Events events;

    [[nodiscard]] std::stop_token stop() const { return events.stopToken(); }
};
using SharedTurn = std::shared_ptr<Turn>;

QString withLocalEnding(const QString &what)
{
    return what + Refused::localReplyEnding();
}

// The first row of a turn has the id that the turn was opened with. Whoever asked for that hears of a later
// one.
void record(Turn &turn, ProofLedger::Entry entry)
{
    const AIConfiguration &configuration = turn.configuration;
    const bool isLater =
        !configuration.proofRow.isNull() && turn.ledger.find(configuration.proofRow).has_value();
    entry.id = isLater ? QUuid::createUuid() : configuration.proofRow;
    entry.purpose = configuration.purpose.value_or(u"chat"_s);
    entry.carrying = configuration.carrying;
    const QUuid row = turn.ledger.append(std::move(entry));
    if (isLater)
        turn.events.yield(AIStream::Recorded{row});
}

// What a turn without a proof ends with.
ProviderError refusalFor(const std::exception_ptr &error)
{
    using Service = VeniceAttestationService::Failure;
    try {
        std::rethrow_exception(error);
    } catch (const Refused &refused) {
        Log::error(category, "Venice attestation refused: %{public}s"_L1,
                   {Text::prefix(refused.caseText(), longestLogged)});
        return {ProviderError::EnclaveUnverified{refused.userMessage()}};
    } catch (const Service &failure) {
        if (failure.reason() == Service::Case(Service::Http{tooManyRequests})) {
            Log::error(category, "Venice attestation rate limited"_L1);
            return {
                ProviderError::PrivateCloudBusy{withLocalEnding(u"The private cloud is busy right now"_s)}};
        }
    } catch (const std::exception &) {
        // No answer, one that can't be read, or no randomness for a nonce.
    }
    Log::error(category, "Venice attestation unavailable"_L1);
    return {ProviderError::PrivateCloudBusy{
        withLocalEnding(Product::name + u" could not reach the private cloud's hardware proof"_s)}};
}

// A server that is busy is asked once more after a pause.
QCoro::Task<Verified> askedTwice(SharedTurn turn, ProofRun run)
{
    const QString model = turn->configuration.model;
    try {
        co_return co_await turn->enclaves.verifiedEnclave(model, run, turn->stop());
    } catch (const VeniceAttestationService::Failure &failure) {
        const VeniceAttestationService::Failure::Case busy =
            VeniceAttestationService::Failure::Http{tooManyRequests};
        if (failure.reason() != busy)
            throw;
    }
    Log::info(category, "Venice attestation rate limited; asking once more after a short pause"_L1);
    if (turn->proofRetryPause.count() > 0)
        co_await pause(turn->clock, turn->proofRetryPause, turn->stop());
    throwIfStopped(turn->stop());
    co_return co_await turn->enclaves.verifiedEnclave(model, run, turn->stop());
}

QCoro::Task<Verified> provenEnclave(SharedTurn turn, ProofRun run, QDateTime startedAt)
{
    try {
        co_return co_await askedTwice(turn, run);
    } catch (const CancelledError &) {
        throw;
    } catch (...) {
        throwIfStopped(turn->stop());
        const ProviderError refusal = refusalFor(std::current_exception());
        record(*turn, {.startedAt = startedAt,
                       .place = {PlaceKind::enclaveRefused, turn->configuration.model, {}},
                       .note = refusal.userMessage(),
                       .acceptedServersList = turn->enclaves.acceptedListText()});
        throw refusal;
    }
}

// What goes out, and what will open the answer to it.
struct Sealed {
    HttpRequest request;
    std::shared_ptr<SealedReply> reply;
};

Sealed seal(const Turn &turn, const Verified &enclave)
{
    try {
        VeniceE2EESession session(enclave);
        const SealedPrompt prompt = SealedRequest::prompt(turn.messages, turn.configuration, turn.tools);
        HttpRequest request = SealedRequest::make(prompt, turn.configuration, session);
        return {std::move(request), std::make_shared<SealedReply>(std::move(session))};
    } catch (const ProviderError &) {
        throw;
    } catch (const std::exception &) {
        throw ProviderError(ProviderError::EnclaveUnverified{
            withLocalEnding(Product::name + u" could not set up encryption to the private cloud"_s)});
    }
}

// One attempt, under a proof and keys that no other has. Nothing once the reply is complete, the status when
// the server refused.
QCoro::Task<std::optional<int>> attempt(SharedTurn turn)
{
    const QDateTime startedAt = turn->clock.now();
    const ProofRun run(turn->watch, turn->configuration.model, startedAt);
    const Verified enclave = co_await provenEnclave(turn, run, startedAt);
    throwIfStopped(turn->stop());
    record(*turn, {.startedAt = startedAt,
                   .place = {PlaceKind::verifiedEnclave, turn->configuration.model, {}},
                   .attestation = ProofLedger::Attestation::of(enclave),
                   .acceptedServersList = enclave.acceptedList.text()});
    run.enter(Stage::sealing);
    Sealed sealed = seal(*turn, enclave);
    const std::shared_ptr<SealedReply> reply = sealed.reply;
    const RequestStop requestStop(turn->stop());
    HttpResponse response = co_await turn->session->send(std::move(sealed.request), requestStop.token());
    run.leave();
    run.end();
    const int status = response.status;
    if (!ProviderFailure::isSuccess(status)) {
        co_await ProviderFailure::readStart(std::move(response), refusalBodyLimit, turn->stop());
        co_return status;
    }
    ReplyLines::Reader reader = [reply, events = turn->events](QByteArrayView line) mutable {
        return reply->add(line, events);
    };
    co_await ReplyLines::read(std::move(response), std::move(reader), turn->stop());
    throwIfStopped(turn->stop());
    reply->finish(turn->events);
    co_return std::nullopt;
}

// A server that refuses is asked once more. Not so when its gateway gave up waiting: the turn may have run.
QCoro::Task<> run(SharedTurn turn)
{
    if (Text::trimmedBlanks(QStringView(turn->configuration.baseURLString)).isEmpty())
        throw ProviderError(Plain::notConfigured);
    const std::optional<int> refused = co_await attempt(turn);
    if (!refused)
        co_return;
    if (*refused == gatewayTimeout) {
        Log::error(category, "Sealed turn timed out upstream (HTTP 504); not retried"_L1);
        throw ProviderError(ProviderError::PrivateCloudUnavailable{*refused});
    }
    throwIfStopped(turn->stop());
    Log::info(category,
              "Sealed turn refused upstream (HTTP %ld); asking for a fresh proof and trying once more"_L1,
              {*refused});
    turn->enclaves.forget(turn->configuration.model);
    const std::optional<int> again = co_await attempt(turn);
    if (!again)
        co_return;
    Log::info(category, "Sealed turn refused again after a fresh proof (HTTP %ld)"_L1, {*again});
    turn->enclaves.forget(turn->configuration.model);
    throw ProviderError(ProviderError::PrivateCloudUnavailable{*again});
}

ProviderError mapped(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const CancelledError &) {
        return {Plain::cancelled};
    } catch (const ProviderError &known) {
        return known;
    } catch (const TransportError &transport) {
        switch (transport.code()) {
        case TransportError::Code::Cancelled:
            return {Plain::cancelled};
        case TransportError::Code::TimedOut:
            return {Plain::networkTimeout};
        default:
            return {Plain::networkUnavailable};
        }
    } catch (...) {
        return {Plain::networkUnavailable};
    }
}

QCoro::Task<> answer(SharedTurn turn)
{
    try {
        co_await run(turn);
        turn->events.finish();
    } catch (...) {
        turn->events.fail(std::make_exception_ptr(mapped(std::current_exception())));
    }
}

} // namespace

VeniceE2EEProvider::VeniceE2EEProvider(VeniceEnclaveSource &enclaves, HttpSessionProviding &network,
                                       ProofLedger &ledger, Clock &clock, ProofWatch *watch,
                                       std::chrono::milliseconds proofRetryPause)
    : m_enclaves(enclaves)
    , m_network(network)
    , m_ledger(ledger)
    , m_clock(clock)
    , m_watch(watch)
    , m_proofRetryPause(proofRetryPause)
{}

AsyncStream<AIStreamEvent> VeniceE2EEProvider::streamReply(std::vector<AIMessage> messages,
                                                           AIConfiguration configuration,
                                                           std::vector<AITool> tools)
{
    auto session = m_network.session(EgressFeature::aiModel, configuration.carrying);
    auto [stream, events] = AsyncStream<AIStreamEvent>::make();
    answer(std::make_shared<Turn>(Turn{m_enclaves, m_ledger, m_clock, m_watch, m_proofRetryPause,
                                       std::move(session), std::move(messages), std::move(configuration),
                                       std::move(tools), events}));
    return std::move(stream);
}

} // namespace morvane
