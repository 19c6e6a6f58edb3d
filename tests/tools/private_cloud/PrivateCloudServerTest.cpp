#include "PrivateCloudClient.h"

#include "support/TestData.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString told = u"The heron sleeps by the mill."_s;

std::vector<AIMessage> question()
{
    return {{.role = AIMessage::Role::user, .content = u"Good morning."_s},
            {.role = AIMessage::Role::assistant, .content = u"PERSON of few words."_s},
            {.role = AIMessage::Role::user, .content = u"Where did the heron go?"_s}};
}

std::vector<AIMessage> withResult()
{
    std::vector<AIMessage> messages = question();
    messages.push_back({.role = AIMessage::Role::assistant, .toolCalls = {{u"1"_s, u"look_up"_s, u"{}"_s}}});
    messages.push_back({.role = AIMessage::Role::tool, .content = told, .toolName = u"look_up"_s});
    return messages;
}

TEST(PrivateCloudServer, AStrictServerTakesNothingElse)
{
    PrivateCloudServer server({u"--require-key"_s, u"secret"_s});
    PrivateCloudClient client(server);
    const QString model = u"e2ee-glm-5-3-flash"_s;
    ASSERT_EQ(client.prove(model), u"ok"_s); // by the built-in list
    EXPECT_TRUE(client.prove(u"e2ee-none"_s).startsWith("HTTP 404"_L1));
    const VeniceE2EESession session = client.session();
    const HttpRequest whole = client.request(model, session, question());
    const auto spoil = [&whole](std::size_t header, const QByteArray &value) {
        HttpRequest request = whole;
        request.headers[header].value = value;
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
        {spoil(0, "text/plain"), "application/json"},
        {spoil(1, "04"), "Client-Pub-Key"},
        {spoil(2, session.publicKey().toHex()), "not the key of this server"},
        {spoil(3, "none"), "Signing-Algo"},
        {replace(sealed, "words"), "doesn't open"},
        {replace(sealed, turned), "doesn't open"},
        {replace(sealed, sealed.toUpper()), "lower-case"},
        {replace("\"user\"", "\"tool\""), "two messages"},
        {replace("\"stream\":true", "\"stream\":false"), "streamed"},
        {replace("\"stream\":true", "\"stream\":true,\"tools\":[]"), "exactly"},
    };
    EXPECT_EQ(client.send(whole).status, 401);
    for (auto [request, words] : table) {
        request.headers.push_back({"Authorization", "Bearer secret"});
        const PrivateCloudClient::Answer answer = client.send(request);
        EXPECT_EQ(answer.status, 400) << words;
        EXPECT_TRUE(answer.body.contains(words)) << answer.body.toStdString();
    }
}

TEST(PrivateCloudServer, ABuiltInModelAndAScriptChangeWhatComes)
{
    const PrivateCloudServer server({u"--built-in"_s, u"e2ee-tools"_s, u"--scenario"_s,
                                     TestData::pathOf("tools/private_cloud_scenario.json")});
    PrivateCloudClient client(server);
    const QString model = u"e2ee-glm-5-3-flash"_s;
    EXPECT_EQ(client.prove(model), u"HTTP 429 Later."_s);
    EXPECT_EQ(client.prove(model), u"ok"_s);
    EXPECT_EQ(client.turn(model, question()), u"one [two][reasoning_content][length]"_s);
    EXPECT_EQ(client.turn(model, withResult()), u"The practice cloud was told: “"_s + told + u"”.[stop]"_s);
    EXPECT_THROW(PrivateCloudServer({u"--built-in"_s, u"e2ee-none"_s}), std::runtime_error);
    EXPECT_THROW(PrivateCloudServer({u"--list"_s, u"none"_s}), std::runtime_error);
}

// What drips, and what is held in the middle, ends with the client; the server's log says so.
TEST(PrivateCloudServer, AClientMayLeaveInTheMiddle)
{
    PrivateCloudServer server;
    PrivateCloudClient client(server);
    EXPECT_EQ(client.fetchList(), u"version 5, 0 withdrawn"_s);
    ASSERT_EQ(client.prove(u"e2ee-held"_s), u"ok"_s);
    EXPECT_EQ(client.begin(client.request(u"e2ee-held"_s, client.session(), question())).status, 200);
    server.awaitEnded(4);
    EXPECT_TRUE(server.turns().back().clientLeft);

    PrivateCloudServer dripping({u"--list"_s, u"drip"_s});
    HttpRequest list;
    list.url = QUrl(dripping.baseUrl() + u"/measurements"_s);
    EXPECT_EQ(client.begin(list).status, 200);
    dripping.awaitEnded(1);
    EXPECT_TRUE(dripping.lists().back().clientLeft);
}

} // namespace

} // namespace morvane
