#include "attestation/VeniceAttestationService.h"

#include "attestation/VeniceEndpoint.h"
#include "utils/bytes/Hex.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Service = VeniceAttestationService;
using VeniceAttestationVerifier::Part;
using VeniceAttestationVerifier::Verified;
using Refused = VeniceAttestationVerifier::Failure;
using Stage = ProofWatch::Stage;

constexpr std::size_t nonceSize = 32;
constexpr qint64 lifetime = 1'800'000; // milliseconds for which a proof is kept
constexpr auto longestAsking = 60s;    // for an answer that drips in without a silence
constexpr auto category = Log::Category::AIProvider;

// A newer list could accept what this refuses; no list could change any other failure.
bool isUnknownServer(const Refused &refused)
{
    using Case = VeniceMeasurementAllowlist::Refusal::Case;
    if (const auto *configuration = std::get_if<Refused::Configuration>(&refused.reason())) {
        const Case reason = configuration->refusal.reason();
        return reason == Case::configurationNotReviewed || reason == Case::bootMeasurementMismatch;
    }
    return std::holds_alternative<Refused::MeasurementsNotAllowed>(refused.reason());
}

Stage stageOf(Part part)
{
    switch (part) {
    case Part::key:
        return Stage::key;
    case Part::hardware:
        return Stage::processor;
    case Part::baseSystem:
        return Stage::baseSystem;
    case Part::boot:
        return Stage::boot;
    case Part::graphicsChips:
        return Stage::graphicsChips;
    }
    return Stage::key;
}

QCoro::Task<QByteArray> fetched(std::shared_ptr<HttpSession> session, HttpRequest request,
                                std::stop_token stop)
{
    try {
        HttpResponse response = co_await session->send(std::move(request), stop);
        if (response.status < 200 || response.status > 299)
            throw Service::Failure(Service::Failure::Http{response.status});
        co_return co_await readBody(std::move(response), Service::largestProof, stop);
    } catch (const TransportError &error) {
        if (error.code() == TransportError::Code::Cancelled)
            throw CancelledError();
        throw Service::Failure(Service::Failure::Transport{error.description()});
    }
}

} // namespace

VeniceAttestationService::VeniceAttestationService(Parts parts)
    : m_parts(std::move(parts))
{}

QByteArray VeniceAttestationService::randomNonce()
{
    return SecretBytes::random(nonceSize).view().toByteArray();
}

QCoro::Task<Verified> VeniceAttestationService::verifiedEnclave(QString model, ProofRun run,
                                                                std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    check();
    const QDateTime now = m_parts.clock.now();
    std::optional<Refresh> refresh;
    if (m_parts.lists) {
        refresh = co_await m_parts.lists->refreshIfDue(now, stop);
        check();
    }
    if (refresh && kept(model, now)) {
        co_await waitBriefly(*refresh, stop);
        check();
    }
    if (const Verified *proof = kept(model, now)) {
        run.takeEarlier(proof->verifiedGPUCount > 0);
        co_return Verified(*proof);
    }
    m_cache.erase(model);

    run.enter(Stage::asking);
    Question question = co_await asked(model, now, stop);
    check();
    if (refresh) { // not to be judged by a list that is about to change
        const bool isNewer = co_await refresh->wait(stop);
        check();
        if (isNewer)
            dropAll();
    }
    co_return co_await judgedByNewestList(std::move(question), run, stop);
}

void VeniceAttestationService::forget(const QString &model)
{
    m_cache.erase(model);
}

QString VeniceAttestationService::acceptedListText() const
{
    return currentAllowlist(m_parts.clock.now()).source.text();
}

VeniceMeasurementAllowlist VeniceAttestationService::currentAllowlist(const QDateTime &now) const
{
    return m_parts.lists ? m_parts.lists->allowlist(now) : m_parts.fixedAllowlist;
}

const Verified *VeniceAttestationService::kept(const QString &model, const QDateTime &now) const
{
    const auto found = m_cache.find(model);
    const bool holds = found != m_cache.end() && found->second.verifiedAt.msecsTo(now) < lifetime;
    return holds ? &found->second : nullptr;
}

// For a list that is on its way while there is a proof. What was judged by the former goes when another one
// comes, be it behind the wait.
QCoro::Task<> VeniceAttestationService::waitBriefly(Refresh refresh, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const std::optional<bool> isNewer = co_await refresh.wait(m_parts.clock, m_parts.listWait, stop);
    check();
    if (!isNewer)
        dropAllAfter(this, m_lifeline.check({}), std::move(refresh));
    else if (*isNewer)
        dropAll();
}

QCoro::Task<> VeniceAttestationService::dropAllAfter(VeniceAttestationService *self, Lifeline::Check check,
                                                     Refresh refresh)
{
    const bool isNewer = co_await refresh.wait(std::stop_token());
    check();
    if (isNewer)
        self->dropAll();
}

void VeniceAttestationService::dropAll()
{
    m_cache.clear();
    ++m_listChanges;
}

HttpRequest VeniceAttestationService::requestFor(const Question &question) const
{
    auto url = VeniceEndpoint::url(m_parts.baseURLString, u"attestation"_s);
    if (!url)
        throw Failure(Failure::Plain::badEndpoint);
    const QString model = QString::fromLatin1(QUrl::toPercentEncoding(question.model));
    url->setQuery(u"model="_s + model + u"&nonce="_s + Hex::encode(question.nonce), QUrl::StrictMode);
    HttpRequest request;
    request.url = *url;
    request.headers.push_back({"Accept", "application/json"});
    request.timeout = 30s;
    request.limit = longestAsking;
    return request;
}

// The question to judge, all but the list: what the server answers to a nonce of ours.
QCoro::Task<VeniceAttestationService::Question> VeniceAttestationService::asked(QString model, QDateTime now,
                                                                                std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    Question question{.model = std::move(model),
                      .nonce = m_parts.makeNonce(),
                      .pins = m_parts.pins,
                      .date = std::move(now)};
    HttpRequest request = requestFor(question);
    auto session = m_parts.sessions.session(EgressFeature::aiModel, {});
    const QByteArray body = co_await fetched(std::move(session), std::move(request), stop);
    check();
    const std::function<VeniceAttestationDocument()> decode = [body] {
        return VeniceAttestationDocument::decode(QByteArrayView(body));
    };
    question.document = co_await m_parts.work.run(decode, stop);
    co_return std::move(question);
}

// Keeps what holds, unless another list came while it was judged.
QCoro::Task<Verified> VeniceAttestationService::judged(Question question, ProofRun run, std::stop_token stop)
{
    using Step = std::variant<Part, Verified>;
    const auto check = m_lifeline.check(stop);
    question.allowlist = currentAllowlist(question.date);
    const QString model = question.model;
    const quint64 listChanges = m_listChanges;
    const std::function<void(const Work::Report<Step> &, const std::stop_token &)> verify =
        [question = std::move(question)](const Work::Report<Step> &report, const std::stop_token &) {
            const auto progress = [&report](Part part) { report(Step(part)); };
            report(Step(VeniceAttestationVerifier::verify(question, progress)));
        };
    Work::Results<Step> steps = m_parts.work.start<Step>(verify);
    std::optional<Verified> proof;
    while (const auto step = co_await steps.next(stop)) {
        if (const auto *part = std::get_if<Part>(&*step))
            run.enter(stageOf(*part));
        else
            proof = std::get<Verified>(*step);
    }
    check();
    if (!proof->stack.requiresGPUEvidence)
        run.skip(Stage::graphicsChips);
    run.leave();
    Log::info(category, "Venice enclave verified: %{public}s"_L1, {proof->summary()});
    if (listChanges == m_listChanges)
        m_cache.insert_or_assign(model, *proof);
    co_return *std::move(proof);
}

// A server that no list knows may be in a newer one: the same proof is judged once more then, and no new one
// asked for.
QCoro::Task<Verified> VeniceAttestationService::judgedByNewestList(Question question, ProofRun run,
                                                                   std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    std::exception_ptr refusal;
    try {
        co_return co_await judged(question, run, stop);
    } catch (const Refused &refused) {
        check();
        if (!m_parts.lists || !isUnknownServer(refused))
            throw;
        refusal = std::current_exception();
    }
    const bool isNewer = co_await m_parts.lists->refreshAfterRefusal(question.date, stop);
    check();
    if (!isNewer)
        std::rethrow_exception(refusal);
    dropAll();
    Log::info(
        category,
        "Venice proof refused as an unknown server; a newer signed list arrived, checking once more"_L1);
    co_return co_await judged(std::move(question), run, stop);
}

} // namespace morvane
