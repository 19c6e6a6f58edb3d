#include "support/PrivateCloudServer.h"

#include "ai/private_cloud/SealedRequest.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Answer {
    int status = 0;
    QByteArray body;
};

QCoro::Task<Answer> answered(std::shared_ptr<HttpSession> session, HttpRequest request)
{
    const std::stop_token never;
    HttpResponse response = co_await session->send(std::move(request), never);
    Answer answer{response.status, {}};
    answer.body = co_await readBody(std::move(response), 1 << 20, never);
    co_return answer;
}

TEST(PrivateCloudServer, AStrictServerTakesNothingElse)
{
    const PrivateCloudServer server({u"--require-key"_s, u"secret"_s});
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    const auto send = [&](HttpRequest request) {
        return TestWait::await(answered(network.session(EgressFeature::aiModel, {}), std::move(request)));
    };
    AIConfiguration configuration;
    configuration.baseURLString = server.baseUrl();
    configuration.model = u"e2ee-glm-5-3-flash"_s;
    HttpRequest proof;
    const QString nonce = u"7"_s.repeated(64);
    proof.url = QUrl(server.baseUrl() + u"/attestation?model=%1&nonce=%2"_s.arg(configuration.model, nonce));
    proof.headers = {{"Accept", "application/json"}};
    VeniceAttestationVerifier::Verified enclave;
    const auto document = QJsonDocument::fromJson(send(proof).body);
    ASSERT_TRUE(document.isObject());
    enclave.modelPublicKey = QByteArray::fromHex(document["signing_key"_L1].toString().toLatin1());
    const VeniceE2EESession session(enclave);
    const auto prompt = SealedRequest::prompt({{.content = u"Where?"_s}}, configuration, {});
    EXPECT_EQ(send(SealedRequest::make(prompt, configuration, session)).status, 401);
    configuration.apiKey = u"secret"_s;
    const HttpRequest whole = SealedRequest::make(prompt, configuration, session);
    EXPECT_EQ(send(whole).status, 200);

    const auto spoil = [&whole](const QByteArray &header, const QByteArray &value) {
        HttpRequest request = whole;
        for (HttpHeader &each : request.headers)
            each.value = each.name == header ? value : each.value;
        return request;
    };
    const auto replace = [&whole](const QByteArray &before, const QByteArray &after) {
        HttpRequest request = whole;
        EXPECT_TRUE(request.body.contains(before)) << before.toStdString();
        request.body.replace(before, after);
        return request;
    };
    const QByteArray sealed =
        QJsonDocument::fromJson(whole.body)["messages"_L1][1]["content"_L1].toString().toLatin1();
    QByteArray turned = sealed;
    turned.back() = turned.back() == '0' ? '1' : '0';
    const std::pair<HttpRequest, const char *> table[]{
        {spoil("Content-Type", "text/plain"), "application/json"},
        {spoil("X-Venice-TEE-Client-Pub-Key", "04"), "Client-Pub-Key"},
        {spoil("X-Venice-TEE-Model-Pub-Key", session.publicKey().toHex()), "not the key of this server"},
        {spoil("X-Venice-TEE-Signing-Algo", "none"), "Signing-Algo"},
        {replace(sealed, "words"), "doesn't open"},
        {replace(sealed, turned), "doesn't open"},
        {replace(sealed, sealed.toUpper()), "lower-case"},
        {replace("\"user\"", "\"tool\""), "two messages"},
        {replace("\"stream\":true", "\"stream\":false"), "streamed"},
        {replace("\"stream\":true", "\"stream\":true,\"tools\":[]"), "exactly"},
    };
    for (const auto &[request, words] : table) {
        const Answer answer = send(request);
        EXPECT_EQ(answer.status, 400) << words;
        EXPECT_TRUE(answer.body.contains(words)) << answer.body.toStdString();
    }
    EXPECT_THROW(PrivateCloudServer({u"--built-in"_s, u"e2ee-none"_s}), std::runtime_error);
    EXPECT_THROW(PrivateCloudServer({u"--list"_s, u"none"_s}), std::runtime_error);
}

} // namespace

} // namespace morvane
