#include "ai/private_cloud/VeniceE2EEProvider.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "async/Clock.h"
#include "attestation/VeniceAttestationService.h"
#include "attestation/evidence/BundledAllowlist.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ModelServer.h"
#include "support/PrivateCloudServer.h"
#include "utils/bytes/Hex.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

// What sealing adds to the time to a reply's first word, on loopback, against the plain dialect: with the
// proof at hand, and with one that is asked for first. The servers' own work is in it.

namespace {

// It thinks aloud in a field of its own, so nothing of its text is held back.
const QString model = u"e2ee-reasoning"_s;

struct Bench {
    Bench()
    {
        plain.baseURLString = models.baseUrl();
        plain.model = u"practice-fast"_s;
        plain.maxOutputTokens = 512;
        sealed = plain;
        sealed.baseURLString = cloud.baseUrl();
        sealed.model = model;
    }

    static VeniceMeasurementAllowlist allowlist()
    {
        VeniceMeasurementAllowlist accepted = BundledAllowlist::ofThisBuild();
        accepted.stacksByModel[model] = accepted.stacksByModel.begin()->second;
        return accepted;
    }

    static QCoro::Task<double> firstWordOf(AsyncStream<AIStreamEvent> reply, QElapsedTimer since)
    {
        double first = -1;
        while (const auto event = co_await reply.next()) {
            const auto *text = std::get_if<AIStream::Text>(&*event);
            if (text && !text->piece.isEmpty() && first < 0)
                first = static_cast<double>(since.nsecsElapsed()) / 1e6;
        }
        co_return first;
    }

    // Milliseconds from the question, of thirty messages of a thousand characters, to the first word.
    double firstWord(AIProvider &provider, const AIConfiguration &configuration)
    {
        const std::vector<AIMessage> messages(30, {.content = QString(1000, u'q')});
        QElapsedTimer since;
        since.start();
        return TestWait::await(firstWordOf(provider.streamReply(messages, configuration, {}), since));
    }

    // The same for what a proof costs by itself: asked for, read and judged.
    double bareProof()
    {
        VeniceAttestationVerifier::Question question{.model = model,
                                                     .nonce = QByteArray(32, '\5'),
                                                     .allowlist = allowlist(),
                                                     .pins = EvidencePins::ofThisBuild(),
                                                     .date = clock.now()};
        HttpRequest request;
        request.url = QUrl(cloud.baseUrl() + u"/attestation?model="_s + model + u"&nonce="_s +
                           Hex::encode(question.nonce));
        request.headers.push_back({"Accept", "application/json"});
        const auto session = network.session(EgressFeature::aiModel, {});
        QElapsedTimer since;
        since.start();
        HttpResponse response = TestWait::await(session->send(std::move(request), {}));
        const QByteArray body =
            TestWait::await(readBody(std::move(response), VeniceAttestationService::largestProof, {}));
        question.document = VeniceAttestationDocument::decode(QByteArrayView(body));
        benchmark::DoNotOptimize(VeniceAttestationVerifier::verify(question));
        return static_cast<double>(since.nsecsElapsed()) / 1e6;
    }

    ModelServer models;
    PrivateCloudServer cloud;
    SystemClock clock;
    NetworkLedger networkLedger;
    AppNetwork network{networkLedger, clock};
    Work work{clock};
    VeniceAttestationService attestation{{.baseURLString = cloud.baseUrl(),
                                          .sessions = network,
                                          .clock = clock,
                                          .work = work,
                                          .pins = EvidencePins::ofThisBuild(),
                                          .fixedAllowlist = allowlist()}};
    ProofLedger proofs;
    ProofWatch watch;
    OpenAICompatibleProvider plainProvider{network};
    VeniceE2EEProvider sealedProvider{attestation, network, proofs, clock, &watch};
    AIConfiguration plain;
    AIConfiguration sealed;
};

void tell(benchmark::State &state, std::vector<double> milliseconds)
{
    std::ranges::sort(milliseconds);
    state.counters["value"] = milliseconds.at(milliseconds.size() / 2);
    state.SetLabel("ms");
}

void sealWithKeptProof(benchmark::State &state)
{
    Bench bench;
    bench.firstWord(bench.sealedProvider, bench.sealed);
    std::vector<double> added;
    for (auto _ : state) {
        const double plain = bench.firstWord(bench.plainProvider, bench.plain);
        added.push_back(bench.firstWord(bench.sealedProvider, bench.sealed) - plain);
    }
    tell(state, std::move(added));
}
BENCHMARK(sealWithKeptProof)->Name("sealed_turn_added_to_first_word")->Iterations(60);

void sealWithNewProof(benchmark::State &state)
{
    Bench bench;
    std::vector<double> added;
    for (auto _ : state) {
        bench.attestation.forget(model);
        const double fresh = bench.firstWord(bench.sealedProvider, bench.sealed);
        added.push_back(fresh - bench.firstWord(bench.sealedProvider, bench.sealed));
    }
    tell(state, std::move(added));
}
BENCHMARK(sealWithNewProof)->Name("sealed_turn_added_by_proof")->Iterations(60);

void proveAlone(benchmark::State &state)
{
    Bench bench;
    std::vector<double> all;
    for (auto _ : state)
        all.push_back(bench.bareProof());
    tell(state, std::move(all));
}
BENCHMARK(proveAlone)->Name("sealed_turn_added_by_proof/yardstick")->Iterations(60);

} // namespace

} // namespace morvane

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
