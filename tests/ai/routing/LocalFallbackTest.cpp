#include "RouterFixture.h"

#include "ai/routing/LocalFallbackStream.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString unverified =
    u"MorvaneGPT could not confirm the private cloud was answering live, so this reply is from the model on "
    "your computer."_s;

class LocalFallbackTest : public RouterFixture {
protected:
    LocalFallbackTest() { turnOnPrivateCloud(); }

    Reply run()
    {
        OpenedTurn opened = open({.history = {{MessageRole::user, u"question"_s}}});
        proofRow = opened.proofRow;
        return readReply(router->stream(std::move(opened)));
    }

    const ProviderError refused{ProviderError::EnclaveUnverified{unverified}};
    std::shared_ptr<const QUuid> proofRow; // of the latest turn
};

TEST_F(LocalFallbackTest, AFailedProofIsSaidAndTheLocalModelAnswers)
{
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    sealed->rounds = {{{}, refused}};
    const Reply reply = run();
    EXPECT_EQ(reply.error, std::nullopt);
    EXPECT_EQ(reply.text(), unverified + u"\n\nreply"_s);
    ASSERT_EQ(compatible->requests.size(), 1U);
    const ScriptedModel::Request &local = compatible->requests.front();
    EXPECT_EQ(local.messages, sealed->requests.front().messages) << "the same request";
    EXPECT_EQ(local.configuration.baseURLString, u"http://localhost:11434/v1"_s);
    EXPECT_EQ(local.configuration.model, u"gemma3:4b"_s);
    EXPECT_EQ(local.configuration.apiKey, std::nullopt) << "the key stays with its service";
    ASSERT_TRUE(proofs.find(*proofRow)) << "the turn's row is now that of the place it moved to";
    EXPECT_EQ(proofs.find(*proofRow)->place.model, u"gemma3:4b"_s);
    EXPECT_NE(*proofRow, sealed->requests.front().configuration.proofRow);

    EXPECT_EQ(router->lastEnclaveRefusal(), unverified);
    EXPECT_FALSE(router->usesPrivateCloud());
    EXPECT_EQ(router->privateCloudNotice(),
              u"Private cloud is off: the last hardware proof did not verify on this computer. Replies run "
              "on this computer until you try Private cloud again."_s);
    for (const auto &[address, words] :
         {std::pair{u"http://192.168.1.5"_s, u"Replies run on your network until"_s},
          std::pair{u"https://service.example"_s, u"Replies run on the service you chose until"_s}}) {
        configure(address, u"m"_s);
        EXPECT_TRUE(router->privateCloudNotice()->contains(words));
    }
    configure(u"http://localhost"_s, u"m"_s);
    router->choose(SourceOption::Choice::privateCloud);
    EXPECT_TRUE(router->usesPrivateCloud());
}

TEST_F(LocalFallbackTest, WithoutALocalModelTheReasonIsTheError)
{
    const std::vector<std::pair<QString, QString>> table{
        {unverified,
         u"MorvaneGPT could not confirm the private cloud was answering live, and no model is set up on this "
         "computer, so this message was not answered. Settings > AI sets one up."_s},
        {u"Something else."_s, u"Something else."_s},
    };
    for (const auto &[reason, words] : table) {
        sealed->rounds = {{{}, ProviderError(ProviderError::PrivateCloudBusy{reason})}};
        EXPECT_EQ(run().error, ProviderError(ProviderError::PrivateCloudCouldNotAnswer{words}));
        EXPECT_TRUE(router->usesPrivateCloud()) << "being busy says nothing about a proof";
        localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
        probes.models = {{{u"gemma3:4b"_s, true}}}; // and so is none that runs elsewhere
    }
}

TEST_F(LocalFallbackTest, AReplyThatHasBegunAndEveryOtherErrorStandAsTheyAre)
{
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    sealed->rounds = {{{AIStream::Thinking{}, AIStream::Text{u"Half"_s}}, refused}};
    const Reply broken = run();
    EXPECT_EQ(broken.error, refused);
    EXPECT_EQ(broken.text(), u"Half"_s);
    EXPECT_EQ(router->lastEnclaveRefusal(), unverified) << "off all the same";
    router->tryPrivateCloudAgain();

    const QUuid retried = QUuid::createUuid();
    sealed->rounds = {{{AIStream::Recorded{retried}, AIStream::Text{u"Half"_s}}, refused}};
    EXPECT_EQ(run().events.size(), 1U);
    EXPECT_EQ(*proofRow, retried) << "the row of the attempt that gave the answer";
    router->tryPrivateCloudAgain();

    sealed->rounds = {{{AIStream::Thinking{}, AIStream::Text{QString()}}, refused}};
    EXPECT_EQ(run().text(), unverified + u"\n\nreply"_s) << "no text has been shown";
    router->tryPrivateCloudAgain();

    for (const ProviderError &error : {ProviderError(ProviderError::PrivateCloudUnavailable{504}),
                                       ProviderError(ProviderError::Plain::cancelled)}) {
        sealed->rounds = {{{AIStream::Thinking{}}, error}};
        EXPECT_EQ(run().error, error);
    }
    EXPECT_EQ(router->lastEnclaveRefusal(), std::nullopt);
}

// Only the private cloud's refusals are made good, whoever else may speak of one.
TEST_F(LocalFallbackTest, OtherPlacesAreNotRelayed)
{
    settings.setHostedChatEnabled(false);
    localModel.set(LocalModelServing::State::ready, u"gemma3:4b"_s);
    compatible->rounds = {{{}, refused}};
    EXPECT_EQ(run().error, refused);
    EXPECT_EQ(compatible->requests.size(), 1U);
    EXPECT_EQ(router->lastEnclaveRefusal(), std::nullopt);
}

TEST_F(LocalFallbackTest, TheRouterMayGoBeforeItsReply)
{
    OpenedTurn opened = open();
    sealed->rounds = {{{}, refused}};
    auto stream = router->stream(std::move(opened));
    router.reset();
    EXPECT_THROW(static_cast<void>(readReply(std::move(stream))), CancelledError);
}

} // namespace

} // namespace morvane
