#pragma once

#include "ai/ReplyReading.h"
#include "ai/private_cloud/SealedRequest.h"
#include "ai/private_cloud/VeniceE2EEProvider.h"
#include "attestation/VeniceAttestationService.h"
#include "evidence/TestAuthority.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/bytes/Hex.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

#include <deque>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

inline const QString asked = u"my secret question"_s;
inline const QString ending = u", so this reply is from the model on your computer."_s;

// The private key of the server that the test authority vouches for.
inline SecretBytes serverKey()
{
    return SecretBytes(QByteArray(31, '\0') + '\1');
}

inline QByteArray chunk(const QJsonObject &delta)
{
    const QJsonObject object{{u"choices"_s, QJsonArray{QJsonObject{{u"delta"_s, delta}}}}};
    return "data: " + QJsonDocument(object).toJson(QJsonDocument::Compact) + "\n\n";
}

// One line of a reply by its first letter: s sealed, x sealed and changed, p plain, r and o the two fields of
// reasoning; anything else as it stands.
inline QByteArray lineOf(const QString &script, const QByteArray &clientKey)
{
    const QString text = script.sliced(1);
    switch (script[0].unicode()) {
    case u's':
    case u'x': {
        QString sealed = VeniceE2EESession::sealTo(clientKey, text);
        if (script[0] == u'x')
            sealed.back() = sealed.back() == u'0' ? u'1' : u'0';
        return chunk({{u"content"_s, sealed}});
    }
    case u'p':
        return chunk({{u"content"_s, text}});
    case u'r':
        return chunk({{u"reasoning_content"_s, text}});
    case u'o':
        return chunk({{u"reasoning_content"_s, QJsonValue()}, {u"reasoning"_s, text}});
    default:
        return script.toUtf8() + '\n';
    }
}

// The server's end: gives proofs of the test authority and seals its replies to the key of whoever asks. All
// that crosses the wire is kept.
class Cloud final : public HttpSession, public HttpSessionProviding {
public:
    [[nodiscard]] std::shared_ptr<HttpSession> session(EgressFeature feature,
                                                       SensitiveDataSet carrying) override
    {
        EXPECT_EQ(feature, EgressFeature::aiModel);
        carried.push_back(carrying);
        return {std::shared_ptr<void>(), this};
    }

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override
    {
        throwIfStopped(stop);
        keep(request);
        const bool isProof = request.url.path().endsWith(u"/attestation"_s);
        QByteArray answer = isProof ? QJsonDocument(scenario.document()).toJson() : reply(request);
        auto &script = isProof ? proofs : chats;
        const int status = script.empty() ? 200 : script.front();
        if (!script.empty())
            script.pop_front();
        if (status < 0)
            throw TransportError(static_cast<TransportError::Code>(-status), u"Gone."_s);
        wire += answer;
        auto [body, producer] = AsyncStream<QByteArray>::make();
        producer.yield(status == 200 ? answer : QByteArray(9000, '!'));
        open = staysOpen && !isProof ? std::optional(producer) : std::nullopt;
        if (!open)
            producer.finish();
        HttpResponse response{status, request.url, {}, std::move(body)};
        co_return response;
    }

    Scenario scenario;
    std::deque<int> proofs; // statuses, a TransportError's code as a negative number; 200 when none is left
    std::deque<int> chats;
    QStringList lines;
    bool staysOpen = false;
    std::optional<AsyncStream<QByteArray>::Producer> open;
    std::vector<SensitiveDataSet> carried;
    std::vector<HttpRequest> requests;
    QByteArray wire;

    // P for each question for a proof, C for each turn.
    [[nodiscard]] QString kinds() const
    {
        QString letters;
        for (const HttpRequest &request : requests)
            letters += request.method == "GET" ? u'P' : u'C';
        return letters;
    }
    [[nodiscard]] static QByteArray header(const HttpRequest &request, const QByteArray &name)
    {
        for (const HttpHeader &header : request.headers) {
            if (header.name == name)
                return header.value;
        }
        return "absent";
    }

private:
    void keep(const HttpRequest &request)
    {
        wire += request.url.toEncoded() + request.body;
        for (const HttpHeader &header : request.headers)
            wire += header.name + header.value;
        requests.push_back(request);
    }
    [[nodiscard]] QByteArray reply(const HttpRequest &request) const
    {
        QByteArray body;
        for (const QString &line : lines)
            body += lineOf(line, QByteArray::fromHex(header(request, "X-Venice-TEE-Client-Pub-Key")));
        return body;
    }
};

class SealedTurnTest : public testing::Test {
protected:
    SealedTurnTest()
    {
        configuration.baseURLString = u"https://cloud.invalid/v1"_s;
        configuration.model = cloud.scenario.model;
        configuration.apiKey = u"service-key"_s;
        configuration.temperature = 0.5;
        configuration.maxOutputTokens = 321;
        configuration.proofRow = QUuid::createUuid();
        make(0ms);
    }
    ~SealedTurnTest() override { TestWait::settle(); }

    void make(std::chrono::milliseconds pause)
    {
        provider.emplace(service, cloud, ledger, clock, &watch, pause);
    }

    AsyncStream<AIStreamEvent> start(std::vector<AITool> tools = {})
    {
        return provider->streamReply({{.role = AIMessage::Role::user, .content = asked}}, configuration,
                                     std::move(tools));
    }

    // The rows' places, with what the refused ones say.
    [[nodiscard]] QStringList rows() const
    {
        QStringList all;
        for (const ProofLedger::Entry &row : ledger.snapshot().entries) {
            EXPECT_EQ(row.attestation.has_value(), row.place.code() == u"verified-enclave"_s);
            EXPECT_EQ(row.acceptedServersList, u"Built into this version of MorvaneGPT"_s);
            all += row.place.code() + u' ' + row.place.model + u' ' + row.purpose +
                   (row.note ? u": "_s + *row.note : QString());
        }
        return all;
    }

    [[nodiscard]] bool said(const QString &line) const
    {
        return log.lines().contains(u"ai-provider: "_s + line);
    }

    Cloud cloud;
    ManualClock clock{cloud.scenario.date};
    Work work{clock};
    VeniceAttestationService service{{.baseURLString = u"https://cloud.invalid/v1"_s,
                                      .sessions = cloud,
                                      .clock = clock,
                                      .work = work,
                                      .pins = cloud.scenario.pins,
                                      .fixedAllowlist = cloud.scenario.allowlist(),
                                      .makeNonce = [this] { return cloud.scenario.nonce; }}};
    ProofLedger ledger;
    ProofWatch watch;
    AIConfiguration configuration;
    LogCapture log;
    std::optional<VeniceE2EEProvider> provider;
};

} // namespace morvane
