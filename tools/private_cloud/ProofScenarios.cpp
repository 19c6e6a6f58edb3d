// Servers that prove themselves badly, late or not at all.

#include "CloudScenarios.h"
#include "DevelopmentAuthority.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The first `times` requests for a proof of this model are turned away.
Work turnAway(Attestation &attestation, int times, int status)
{
    if (attestation.state.count(attestation.model + u" proof"_s) > times)
        co_await attestation.prove();
    else
        co_await CloudScenarios::refuse(attestation.exchange, status, u"Too many requests for a proof."_s);
}

Work limitedOnce(Attestation &attestation)
{
    co_await turnAway(attestation, 1, 429);
}

Work limitedTwice(Attestation &attestation)
{
    co_await turnAway(attestation, 2, 429);
}

Work unavailable(Attestation &attestation)
{
    co_await CloudScenarios::refuse(attestation.exchange, 503, u"No server has room."_s);
}

// The connection ends where an answer should be.
Work dead(Attestation &attestation)
{
    attestation.exchange.cut();
    co_return;
}

Work notJson(Attestation &attestation)
{
    co_await attestation.exchange.respond(200, "application/json", "<html>proof</html>");
}

Work held(Attestation &attestation)
{
    co_await attestation.exchange.hold(attestation.state.holdPoint());
    co_await attestation.prove();
}

Work wrongModel(Attestation &attestation)
{
    Scenario server = attestation.server();
    server.model = u"e2ee-another"_s;
    co_await attestation.send(server);
}

// A proof that was made for somebody else, sound in itself.
Work wrongNonce(Attestation &attestation)
{
    const QByteArray stale(32, '\x5a');
    Scenario server = attestation.server();
    server.nonce = stale;
    for (GPURecipe &gpu : server.gpus)
        gpu.nonce = gpu.reportNonce = stale;
    co_await attestation.send(server);
}

Work withoutGPUs(Attestation &attestation)
{
    Scenario server = attestation.server();
    server.onDocument = [whole = server.onDocument](QJsonObject &document) {
        whole(document);
        document.remove("nvidia_payload"_L1);
    };
    co_await attestation.send(server);
}

// The hardware measured it, nobody reviewed it.
Work changedConfiguration(Attestation &attestation)
{
    Scenario server = attestation.server();
    server.configurationText.replace("docker-compose"_L1, "docker-composf"_L1);
    co_await attestation.send(server);
}

// Brought up to date before the lists were.
Work newerImage(Attestation &attestation)
{
    Scenario server = attestation.server();
    server.quote.report.mrtd = DevelopmentAuthority::newerImage();
    co_await attestation.send(server);
}

Work otherImage(Attestation &attestation)
{
    Scenario server = attestation.server();
    server.quote.report.mrtd = QByteArray(48, '\x7e');
    co_await attestation.send(server);
}

// Sound evidence that another authority vouches for.
Work otherRoot(Attestation &attestation)
{
    const EvidenceAuthority &stranger = EvidenceAuthority::ofThisProcess();
    Scenario server = attestation.server();
    server.quote.chain = stranger.intelChain;
    co_await attestation.send(server);
}

// The key that the client would seal to isn't the one in the quote.
Work otherKey(Attestation &attestation)
{
    Scenario server = attestation.server();
    server.onDocument = [](QJsonObject &document) {
        const QByteArray key = KnownKey::publicKey();
        document["signing_key"_L1] = QString::fromLatin1(key.toHex());
        document["signing_address"_L1] = QString::fromLatin1(KnownKey::address().toHex());
    };
    co_await attestation.send(server);
}

} // namespace

std::span<const CloudScenario> CloudScenarios::proofs()
{
    static constexpr CloudScenario all[]{
        {"e2ee-proof-429-once"_L1, "HTTP 429 to the first request for a proof, then good"_L1, limitedOnce,
         nullptr},
        {"e2ee-proof-429-twice"_L1, "HTTP 429 to the first two requests for a proof"_L1, limitedTwice,
         nullptr},
        {"e2ee-proof-503"_L1, "HTTP 503 to every request for a proof"_L1, unavailable, nullptr},
        {"e2ee-proof-dead"_L1, "closes the connection where the proof should be"_L1, dead, nullptr},
        {"e2ee-proof-not-json"_L1, "a page in place of the proof"_L1, notJson, nullptr},
        {"e2ee-proof-held"_L1, "a good proof, once POST /go-on has come"_L1, held, nullptr},
        {"e2ee-proof-wrong-model"_L1, "a proof of another model"_L1, wrongModel, nullptr},
        {"e2ee-proof-wrong-nonce"_L1, "a good proof for another nonce"_L1, wrongNonce, nullptr},
        {"e2ee-proof-no-gpu"_L1, "a proof without evidence of graphics chips"_L1, withoutGPUs, nullptr},
        {"e2ee-proof-changed-configuration"_L1, "a configuration that nobody reviewed"_L1,
         changedConfiguration, nullptr},
        {"e2ee-proof-newer-image"_L1, "an image that only lists of version 6 name"_L1, newerImage, nullptr},
        {"e2ee-proof-other-image"_L1, "an image that no list names"_L1, otherImage, nullptr},
        {"e2ee-proof-other-root"_L1, "a processor that another root vouches for"_L1, otherRoot, nullptr},
        {"e2ee-proof-other-key"_L1, "a key that the quote doesn't name"_L1, otherKey, nullptr},
    };
    return all;
}

} // namespace morvane
