#include "evidence/TestAuthority.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/OpenSSLHandles.h"
#include "attestation/evidence/VeniceMeasurementAllowlist.h"

#include <benchmark/benchmark.h>
#include <openssl/core_names.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

// Hardware proof: each figure beside the work that no implementation can leave out.

namespace {

// As long as a genuine one. The certificates are there more than once, which parsing doesn't mind.
const QByteArray &longQuote()
{
    static const QByteArray quote = [] {
        QuoteRecipe recipe;
        recipe.onPEM = [](QByteArray &pem) {
            const QByteArray once = pem;
            while (pem.size() < 3700)
                pem += once;
        };
        return recipe.build();
    }();
    return quote;
}

void parseQuote(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(TDXQuote::parse(longQuote()));
    state.SetBytesProcessed(state.iterations() * longQuote().size());
}
BENCHMARK(parseQuote)->Name("quote_parse");

// The certificates' base64 and a copy of the rest.
void decodeChain(benchmark::State &state)
{
    const auto chain = TDXQuote::parse(longQuote()).certificateChain;
    std::vector<QByteArray> base64;
    for (const QByteArray &der : chain)
        base64.push_back(der.toBase64());
    for (auto _ : state) {
        for (const QByteArray &text : base64)
            benchmark::DoNotOptimize(QByteArray::fromBase64(text));
        benchmark::DoNotOptimize(QByteArray(longQuote().constData(), longQuote().size()));
    }
}
BENCHMARK(decodeChain)->Name("quote_parse/yardstick");

void verifyQuote(benchmark::State &state)
{
    const Scenario scenario;
    const TDXQuote quote = TDXQuote::parse(scenario.quoteBytes());
    for (auto _ : state)
        TDXQuoteVerifier::verify(quote, scenario.pins, scenario.date);
}
BENCHMARK(verifyQuote)->Name("quote_verify");

QByteArray derSignature(const QByteArray &raw)
{
    const OpenSSL::Signature parts(ECDSA_SIG_new());
    const auto half = static_cast<int>(raw.size() / 2);
    ECDSA_SIG_set0(parts.get(), BN_bin2bn(OpenSSL::bytesOf(raw), half, nullptr),
                   BN_bin2bn(OpenSSL::bytesOf(raw) + half, half, nullptr));
    QByteArray der(i2d_ECDSA_SIG(parts.get(), nullptr), '\0');
    unsigned char *cursor = OpenSSL::bytesOf(der);
    i2d_ECDSA_SIG(parts.get(), &cursor);
    return der;
}

OpenSSL::Key pointKey(const QByteArray &publicKey)
{
    QByteArray point = "\x04" + publicKey;
    char group[] = "P-256";
    OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group, 0),
        OSSL_PARAM_construct_octet_string(OSSL_PKEY_PARAM_PUB_KEY, point.data(), std::size_t(point.size())),
        OSSL_PARAM_construct_end()};
    const OpenSSL::KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
    EVP_PKEY *key = nullptr;
    EVP_PKEY_fromdata_init(context.get());
    EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters);
    return OpenSSL::Key(key);
}

bool holds(EVP_PKEY *key, const QByteArray &signature, const QByteArray &message)
{
    const OpenSSL::Digesting context(EVP_MD_CTX_new());
    return EVP_DigestVerifyInit(context.get(), nullptr, OpenSSL::sha256(), nullptr, key) == 1 &&
           EVP_DigestVerify(context.get(), OpenSSL::bytesOf(signature), std::size_t(signature.size()),
                            OpenSSL::bytesOf(message), std::size_t(message.size())) == 1;
}

// The library calls of a verification with all their inputs prepared: three certificates, one chain, two
// signatures, two digests.
void callOpenSSL(benchmark::State &state)
{
    const Scenario scenario;
    const TDXQuote quote = TDXQuote::parse(scenario.quoteBytes());
    const QByteArray quoteSignature = derSignature(quote.signature);
    const QByteArray enclaveSignature = derSignature(quote.qeReportSignature);
    for (auto _ : state) {
        bool good = holds(pointKey(quote.attestationKey).get(), quoteSignature, quote.signedBody);
        std::vector<OpenSSL::Certificate> certificates;
        const OpenSSL::BorrowingStack others(sk_X509_new_null());
        for (const QByteArray &der : quote.certificateChain) {
            const unsigned char *cursor = OpenSSL::bytesOf(der);
            certificates.emplace_back(d2i_X509(nullptr, &cursor, long(der.size())));
            sk_X509_push(others.get(), certificates.back().get());
        }
        const OpenSSL::Store store(X509_STORE_new());
        X509_STORE_add_cert(store.get(), certificates.back().get());
        X509_VERIFY_PARAM_set_time(X509_STORE_get0_param(store.get()), scenario.date.toSecsSinceEpoch());
        const OpenSSL::StoreContext context(X509_STORE_CTX_new());
        X509_STORE_CTX_init(context.get(), store.get(), certificates[0].get(), others.get());
        good = good && X509_verify_cert(context.get()) == 1 &&
               holds(X509_get0_pubkey(certificates[0].get()), enclaveSignature, quote.qeReport);
        benchmark::DoNotOptimize(Digest::sha256({quote.certificateChain.back()}));
        benchmark::DoNotOptimize(Digest::sha256({quote.attestationKey, quote.qeAuthenticationData}));
        if (!good)
            state.SkipWithError("the yardstick refused a good quote");
    }
}
BENCHMARK(callOpenSSL)->Name("quote_verify/yardstick");

// Each device has its own two lowest certificates, as in the field; those above are one server's. So three of
// a device's five signatures are its own: eight devices need 26 against one device's 5, and two cores can't
// go below 2.6.
NvidiaGPUEvidence gpuEvidence(const Scenario &scenario, std::size_t count)
{
    Scenario server = scenario;
    server.gpus.resize(1);
    while (server.gpus.size() < count) {
        GPURecipe gpu = server.gpus[0];
        gpu.chain[1].key = gpu.chain[0].issuerKey = SigningKey(SigningKey::Curve::P384);
        gpu.chain[0].key = SigningKey(SigningKey::Curve::P384);
        server.gpus.push_back(gpu);
    }
    return NvidiaGPUEvidence::parse(server.payload());
}

// A second thread beside the calling one, as a caller with two cores would spread the devices.
void onTwoThreads(std::size_t count, const NvidiaGPUEvidence::Piece &piece)
{
    std::atomic<std::size_t> next = 0;
    const auto takeTurns = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            piece(i);
    };
    if (count < 2)
        return takeTurns();
    const std::jthread second(takeTurns);
    takeTurns();
}

// By the wall clock, since the work is spread over threads: `count` devices at once, `turns` times.
void verifyGPUs(benchmark::State &state, std::size_t count, int turns)
{
    const Scenario scenario;
    const auto evidence = gpuEvidence(scenario, count);
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        for (int turn = 0; turn < turns; ++turn)
            evidence.verify(scenario.nonce, scenario.pins, scenario.date, onTwoThreads);
    }
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    state.counters["value"] = elapsed.count() / static_cast<double>(state.iterations());
    state.SetLabel("ms");
}
BENCHMARK_CAPTURE(verifyGPUs, eight, 8, 1)->Name("gpu_evidence_8_devices");
BENCHMARK_CAPTURE(verifyGPUs, one, 1, 1)->Name("gpu_evidence_8_devices/yardstick");
// Two cores can at best halve the work: against four devices in turn on one of them.
BENCHMARK_CAPTURE(verifyGPUs, shared, 8, 1)->Name("gpu_evidence_8_devices_on_two_cores");
BENCHMARK_CAPTURE(verifyGPUs, turns, 1, 4)->Name("gpu_evidence_8_devices_on_two_cores/yardstick");

struct LongConfiguration {
    LongConfiguration()
    {
        const QString prefix = u"{\"app\":\""_s + QString(5700, u'p');
        const QString suffix = QString(14300, u's') + u"\"}"_s;
        scenario.configurationText = prefix + u"host-7"_s + suffix;
        auto &configuration = scenario.stack.configurations[0];
        configuration.prefixLength = prefix.size();
        configuration.prefixSHA256 = Digest::sha256Hex(prefix.toUtf8());
        configuration.suffixLength = suffix.size();
        configuration.suffixSHA256 = Digest::sha256Hex(suffix.toUtf8());
        report = TDXQuote::parse(scenario.quoteBytes()).report;
    }

    Scenario scenario;
    TDXQuote::TDReport report;
};

void matchConfiguration(benchmark::State &state)
{
    const LongConfiguration c;
    const auto list = c.scenario.allowlist();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            list.match(c.report, c.scenario.configurationText, c.scenario.instanceID, c.scenario.model));
    }
}
BENCHMARK(matchConfiguration)->Name("configuration_match_20k");

// The three digests of the text, and its UTF-8.
void digestConfiguration(benchmark::State &state)
{
    const LongConfiguration c;
    for (auto _ : state) {
        const QByteArray text = c.scenario.configurationText.toUtf8();
        benchmark::DoNotOptimize(Digest::sha256({text}));
        benchmark::DoNotOptimize(Digest::sha256({QByteArrayView(text).first(5708)}));
        benchmark::DoNotOptimize(Digest::sha256({QByteArrayView(text).sliced(5714)}));
    }
}
BENCHMARK(digestConfiguration)->Name("configuration_match_20k/yardstick");

} // namespace

} // namespace morvane

BENCHMARK_MAIN();
