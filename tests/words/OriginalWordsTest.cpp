// The texts as they were worded for the original desktop: a build for it says them to the letter.

#include "ai/contract/ProviderError.h"
#include "ai/prompts/SystemPrompt.h"
#include "ai/prompts/SystemPromptStore.h"
#include "ai/routing/ChatSource.h"
#include "ai/routing/LocalFallbackStream.h"
#include "app/WhatChangedNotice.h"
#include "attestation/ProofLedger.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "network/EgressGate.h"
#include "network/PrivateNetworkAddress.h"
#include "security/KeychainError.h"
#include "services/ScreenGlanceError.h"
#include "utils/text/DesktopWords.h"
#include "view_models/chat/ApprovalWords.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QUrl>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

const DesktopWords &DesktopWords::here()
{
    return original;
}

namespace {

QString advice(const UserPresentableError &error)
{
    return error.recoverySuggestion().value_or(QString());
}

TEST(OriginalWordsTest, EachTextIsTheGivenOne)
{
    using Plain = ProviderError::Plain;
    using Refused = VeniceAttestationVerifier::Failure;
    const QString refusal = Refused(Refused::Plain::noQuote).userMessage();
    const std::vector<std::pair<QString, QString>> saidAndGiven{
        {advice(ProviderError(ProviderError::CloudModelInPrivateMode{u"m"_s})),
         u"Choose a model that runs on your Mac or your network in Settings → AI."_s},
        {ProviderError(Plain::localModelRequired).userMessage(),
         u"This uses your private data (screen text, memory notes or an image), which MorvaneGPT sends only "
         "to a model on this Mac or your network, and none is ready."_s},
        {refusal,
         u"MorvaneGPT could not verify the private cloud's hardware proof, so this reply is from the "
         "model on your Mac."_s},
        {LocalFallbackStream::unanswered(refusal).userMessage(),
         u"MorvaneGPT could not verify the private cloud's hardware proof, and no model is set up on this "
         "Mac, so this message was not answered. Settings > AI sets one up."_s},
        {ChatSource::of(u"http://localhost:11434/v1"_s, u"m"_s).whereRepliesRun(), u"on this Mac"_s},
        {PrivateNetworkAddress::labelOf(PrivateNetworkAddress::HostClass::thisMac), u"This Mac"_s},
        {ProofLedger::Place{ProofLedger::Place::Kind::thisMac, {}, {}}.plainName(), u"This Mac"_s},
        {EgressGate::refusalReason(QUrl(u"https://a.test"_s), EgressGate::Reach::PrivateOnly)
             .value_or(QString()),
         u"a.test is not on this Mac or your network, and this request carries your own data"_s},
        {ApprovalWords::footnote({.name = u"read_web_page"_s}, false),
         u"MorvaneGPT downloads this page from your Mac, and its text joins this chat."_s},
        {SystemPromptStore::loadFailedMessage(),
         u"Your saved instructions are sealed with a key this Mac no longer has. Reset to start over."_s},
        {advice(ScreenGlanceError(ScreenGlanceError::Case::permissionNeeded)),
         u"Choose Allow when macOS asks, or turn on MorvaneGPT in System Settings → Privacy & Security → "
         "Screen & System Audio Recording. Either way, quit and reopen MorvaneGPT afterwards so it takes "
         "effect. I only look when you ask."_s},
        {advice(ScreenGlanceError(ScreenGlanceError::Case::needsRelaunch)),
         u"macOS only applies Screen Recording permission when an app launches, and it rechecks after every "
         "update. Quit MorvaneGPT and open it again, then ask me once more."_s},
        {advice(KeychainError(KeychainError::Operation::Read, {})),
         u"Try again. If the problem persists, check Keychain Access for a locked or damaged keychain."_s},
        {WhatChangedNotice::lines().first(), u"MorvaneGPT is one thing now: a private chat for your Mac."_s},
    };
    for (const auto &[said, given] : saidAndGiven)
        EXPECT_EQ(said, given);
}

// The digest was taken from the agreed wording, not from this program.
TEST(OriginalWordsTest, TheModelIsToldOfTheDevice)
{
    const QByteArray told = SystemPrompt::defaultPrompt().toUtf8();
    EXPECT_EQ(QCryptographicHash::hash(told, QCryptographicHash::Sha256).toHex(),
              "3fd61dfb2f81d8f849568082cf1e532247fdaccfe6e900899d70ec71922f00ea");
}

// So was this one.
TEST(OriginalWordsTest, AnExportedProofSaysWhatItIs)
{
    const auto file = QJsonDocument::fromJson(ProofLedger().exportData(QDateTime(), {}));
    const QString said = file["whatThisIs"_L1].toString() + u'\n' + file["howToCheck"_L1].toString();
    EXPECT_EQ(QCryptographicHash::hash(said.toUtf8(), QCryptographicHash::Sha256).toHex(),
              "443dd26f97485794904a3a9375aed7a58d9bda79f03afd706ce71ae04dbe713b");
}

} // namespace

} // namespace morvane
