// What a program with the values of the development deployment does of its own.

#include "ai/routing/AIRequestRouter.h"
#include "app/AppState.h"
#include "app/PrivateCloudParts.h"
#include "async/Work.h"
#include "attestation/ProofWatch.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"
#include "view_models/chat/ChatViewModel.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(DevelopmentTest, TakesARelayOnThisMachineAloneAndNoProfileOfThePersons)
{
    const auto parse = [](const QString &relay) {
        return CommandLine::parse({u"m"_s, u"--profile"_s, u"here"_s, u"--dev-relay"_s, relay});
    };
    using DevRelay::Loopback;
    EXPECT_EQ(parse(u"127.0.0.1:81"_s).devRelay, (DevRelay::Origin{Loopback::ipv4, 81}));
    EXPECT_EQ(parse(u"localhost:65535"_s).devRelay, (DevRelay::Origin{Loopback::localhost, 65535}));
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // other threads are at work
    for (const QString &elsewhere :
         {u"127.0.0.1"_s, u"127.0.0.1:0"_s, u"127.0.0.1:65536"_s, u"127.0.0.1:81/v1"_s, u"a@127.0.0.1:81"_s,
          u"127.0.0.2:81"_s, u"localhost.example:81"_s, u""_s})
        EXPECT_EXIT(static_cast<void>(parse(elsewhere)), testing::ExitedWithCode(2), "on this machine");
    EXPECT_EXIT(static_cast<void>(CommandLine::parse({u"m"_s})), testing::ExitedWithCode(2),
                "needs --profile");
}

TEST(DevelopmentTest, TakesARuntimeOnThisMachineAlone)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(R"({"releaseOrigin":"http://127.0.0.1:1","serverOrigin":"http://127.0.0.1:2"})");
    file.flush();
    QStringList line{u"m"_s, u"--profile"_s, u"here"_s, u"--dev-runtime"_s, file.fileName()};
    EXPECT_EQ(CommandLine::parse(line).devRuntime->folder,
              QFileInfo(u"here/data/Morvane"_s).absoluteFilePath());
    line.last() = u"/dev/null"_s;
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(static_cast<void>(CommandLine::parse(line)), testing::ExitedWithCode(2), "on this machine");
}

TEST(DevelopmentTest, SendsATurnToTheRelayWhichIsKnownToSealAndGetsOnlyQuestionsOfProof)
{
    QTemporaryDir profile;
    ManualClock clock;
    InMemoryKeychainService keychain;
    ScriptedServer relay(ScriptedServer::answering(ScriptedServer::response("404 Not Found", {})));
    CommandLine commandLine;
    commandLine.profile = profile.path();
    commandLine.devRelay = DevRelay::Origin{DevRelay::Loopback::ipv4, relay.port()};
    Work work(clock);
    {
        AppState state(commandLine, Host::test, clock, Secrets{keychain, keychain}, work);
        EXPECT_TRUE(state.storage().settings->hostedRelayStateKnown());
        EXPECT_EQ(state.assistant().router->sourceLabel(), u"Private cloud (dev relay)"_s);
        EXPECT_EQ(state.assistant().router->sources().back().problem, std::nullopt);
        ChatViewModel &chat = *state.presentation().chat;
        chat.sendMessage(u"a secret"_s, std::nullopt);
        TestWait::until([&] { return !chat.isResponding(); });
        EXPECT_TRUE(chat.hasBanner());
        EXPECT_TRUE(state.assistant().privateCloud->watch->run()->isOver);
        const QString list = commandLine.folders().data + u"/ai.morvane.macos/accepted-servers-dev.sealed"_s;
        TestWait::until([&] { return QFileInfo::exists(list); }); // it is asked for beside the proof
        state.storage().settings->setHostedRelayEncrypted(false); // learnt meanwhile
    }
    QByteArrayList asked;
    for (const auto &request : relay.requests()) {
        asked.append(request.target().split('?').front());
        EXPECT_FALSE((request.head + request.body).contains("secret"));
        EXPECT_EQ(request.method(), "GET");
    }
    std::ranges::sort(asked);
    EXPECT_EQ(asked, (QByteArrayList{"/v1/attestation", "/v1/measurements"}));
    TestWait::settle();
    Work later(clock);
    AppState again(commandLine, Host::test, clock, Secrets{keychain, keychain}, later);
    EXPECT_FALSE(again.storage().settings->hostedRelayEncrypted());
    EXPECT_EQ(again.assistant().privateCloud->cloud.apiKey(),
              u"qf_"_s + *keychain.read(u"service-identity.hosted"_s));
}

} // namespace

} // namespace morvane
