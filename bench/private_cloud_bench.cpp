#include "ai/private_cloud/SealedReply.h"
#include "ai/private_cloud/VeniceE2EEProvider.h"
#include "async/Clock.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "evidence/ListKey.h"
#include "evidence/TestAuthority.h"
#include "utils/bytes/Hex.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/params.h>
#include <secp256k1.h>
#include <secp256k1_ecdh.h>

#include <algorithm>
#include <memory>

namespace morvane {

using namespace Qt::StringLiterals;

// The private cloud: what a sealed reply and a list of accepted servers cost.

namespace {

const QString words = u" of the words"_s; // as much as a model writes at a time

void openChunk(benchmark::State &state)
{
    const Secp256k1::KeyPair pair = Secp256k1::generateKeyPair();
    const QString sealed = VeniceE2EESession::sealTo(pair.publicKey, words);
    for (auto _ : state)
        benchmark::DoNotOptimize(VeniceE2EESession::openWith(pair.privateKey, sealed));
}
BENCHMARK(openChunk)->Name("sealed_chunk_open");

const unsigned char *bytesOf(const QByteArray &bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

int copyX(unsigned char *output, const unsigned char *x, const unsigned char *, void *)
{
    std::copy_n(x, 32, output);
    return 1;
}

// The library calls alone: contexts and algorithms are at hand, the bytes decoded, and nothing is wiped.
void callLibraries(benchmark::State &state)
{
    const Secp256k1::KeyPair pair = Secp256k1::generateKeyPair();
    const QByteArray sealed = *Hex::decode(VeniceE2EESession::sealTo(pair.publicKey, words));
    secp256k1_context *const curve = secp256k1_context_create(SECP256K1_CONTEXT_NONE);
    EVP_KDF *const hkdf = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
    EVP_KDF_CTX *const derivation = EVP_KDF_CTX_new(hkdf);
    EVP_CIPHER *const gcm = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    EVP_CIPHER_CTX *const cipher = EVP_CIPHER_CTX_new();
    unsigned char secret[32];
    unsigned char key[32];
    unsigned char text[256];
    char digest[] = "SHA256";
    char info[] = "ecdsa_encryption";
    OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
                               OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, secret, 32),
                               OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, info, 16),
                               OSSL_PARAM_construct_end()};
    const int length = static_cast<int>(sealed.size()) - 93;
    QByteArray tag = sealed.last(16);
    for (auto _ : state) {
        secp256k1_pubkey sender;
        int written = 0;
        const bool opened =
            secp256k1_ec_pubkey_parse(curve, &sender, bytesOf(sealed), 65) == 1 &&
            secp256k1_ecdh(curve, secret, &sender, pair.privateKey.data(), copyX, nullptr) == 1 &&
            EVP_KDF_derive(derivation, key, 32, parameters) == 1 &&
            EVP_DecryptInit_ex2(cipher, gcm, key, bytesOf(sealed) + 65, nullptr) == 1 &&
            EVP_DecryptUpdate(cipher, text, &written, bytesOf(sealed) + 77, length) == 1 &&
            EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_GCM_SET_TAG, 16, tag.data()) == 1 &&
            EVP_DecryptFinal_ex(cipher, text + written, &written) == 1;
        if (!opened)
            state.SkipWithError("it does not open");
        EVP_KDF_CTX_reset(derivation);
    }
    EVP_CIPHER_CTX_free(cipher);
    EVP_CIPHER_free(gcm);
    EVP_KDF_CTX_free(derivation);
    EVP_KDF_free(hkdf);
    secp256k1_context_destroy(curve);
}
BENCHMARK(callLibraries)->Name("sealed_chunk_open/yardstick");

// From a line of the stream to the event.
void readSealedReply(benchmark::State &state)
{
    VeniceAttestationVerifier::Verified enclave;
    enclave.modelPublicKey = KnownKey::publicKey();
    VeniceE2EESession session(enclave);
    std::vector<QByteArray> lines;
    for (int i = 0; i < 1000; ++i) {
        const QJsonObject delta{{u"content"_s, VeniceE2EESession::sealTo(session.publicKey(), words)}};
        const QJsonObject chunk{{u"choices"_s, QJsonArray{QJsonObject{{u"delta"_s, delta}}}}};
        lines.push_back("data: " + QJsonDocument(chunk).toJson(QJsonDocument::Compact));
    }
    SealedReply reply(std::move(session));
    for (auto _ : state) {
        auto [stream, events] = AsyncStream<AIStreamEvent>::make();
        for (const QByteArray &line : lines)
            reply.add(line, events);
        while (stream.takeBuffered()) {
        }
    }
}
BENCHMARK(readSealedReply)->Name("sealed_reply_1000_chunks")->Unit(benchmark::kMillisecond);

// Gives one proof again and again, as when it is kept; the look at the lists is not in it.
class KeptProof final : public VeniceEnclaveSource {
public:
    [[nodiscard]] QCoro::Task<VeniceAttestationVerifier::Verified> verifiedEnclave(QString, ProofRun run,
                                                                                   std::stop_token) override
    {
        run.takeEarlier(true);
        co_return VeniceAttestationVerifier::Verified(proof);
    }
    void forget(const QString &) override {}
    [[nodiscard]] QString acceptedListText() const override { return {}; }

    VeniceAttestationVerifier::Verified proof = VeniceAttestationVerifier::verify(Scenario().question());
};

// Answers at once, with a text long enough to be shown, sealed to whoever asks.
class AnsweringSession final : public HttpSession, public HttpSessionProviding {
public:
    [[nodiscard]] std::shared_ptr<HttpSession> session(EgressFeature, SensitiveDataSet) override
    {
        return {std::shared_ptr<void>(), this};
    }
    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token) override
    {
        const auto key = std::ranges::find(request.headers, "X-Venice-TEE-Client-Pub-Key", &HttpHeader::name);
        const QString sealed = VeniceE2EESession::sealTo(QByteArray::fromHex(key->value), QString(700, u'w'));
        auto [body, producer] = AsyncStream<QByteArray>::make();
        producer.yield("data: {\"choices\":[{\"delta\":{\"content\":\"" + sealed.toUtf8() + "\"}}]}\n");
        producer.finish();
        HttpResponse response{200, request.url, {}, std::move(body)};
        co_return response;
    }
};

// From the question to the first word, with thirty messages of a thousand characters; the server's own
// sealing included, the network not.
void reachFirstWord(benchmark::State &state)
{
    KeptProof enclaves;
    AnsweringSession server;
    ProofLedger ledger;
    SystemClock clock;
    ProofWatch watch;
    VeniceE2EEProvider provider(enclaves, server, ledger, clock, &watch);
    const std::vector<AIMessage> messages(30, {.content = QString(1000, u'q')});
    AIConfiguration configuration;
    configuration.baseURLString = u"https://cloud.invalid/v1"_s;
    configuration.model = enclaves.proof.model;
    for (auto _ : state) {
        auto reply = provider.streamReply(messages, configuration, {});
        while (!reply.takeBuffered())
            QCoreApplication::processEvents();
    }
}
BENCHMARK(reachFirstWord)->Name("sealed_turn_first_word")->Unit(benchmark::kMillisecond);

void readLongestList(benchmark::State &state)
{
    const Scenario scenario;
    const ListKey key;
    QJsonObject list = scenario.signedList();
    QJsonObject entry = list["entries"_L1][0].toObject();
    QJsonArray entries;
    for (int i = 0; i < 128; ++i) {
        entry.insert(u"id"_s, u"server.%1"_s.arg(i));
        entries.append(entry);
    }
    list.insert(u"entries"_s, entries);
    const QByteArray bytes = QJsonDocument(list).toJson();
    const QByteArray signature = key.signatureFile(bytes);
    const std::vector<QByteArray> keys{key.publicKey()};
    const auto noFloor = [](const QByteArray &) { return std::int64_t{0}; };
    for (auto _ : state)
        benchmark::DoNotOptimize(VeniceSignedMeasurementList::verify(bytes, signature, keys, noFloor));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(readLongestList)->Name("signed_list_128_entries")->Unit(benchmark::kMillisecond);

} // namespace

} // namespace morvane

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
