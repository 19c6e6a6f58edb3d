// The texts as they were worded for the original desktop: a build for it says them to the letter.

#include "ai/contract/ProviderError.h"
#include "ai/nearby/ModelServerApp.h"
#include "ai/prompts/SystemPrompt.h"
#include "ai/prompts/SystemPromptStore.h"
#include "ai/routing/ChatSource.h"
#include "ai/routing/LocalFallbackStream.h"
#include "app/WhatChangedNotice.h"
#include "attestation/ProofLedger.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "audio/AudioError.h"
#include "network/EgressGate.h"
#include "network/PrivateNetworkAddress.h"
#include "security/KeychainError.h"
#include "services/DesktopActionError.h"
#include "services/ScreenGlanceError.h"
#include "support/TestData.h"
#include "utils/text/DesktopWords.h"
#include "view_models/chat/ApprovalWords.h"
#include "view_models/chat/ImageWarning.h"

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
    using Desktop = DesktopActionError::Plain;
    using Refused = VeniceAttestationVerifier::Failure;
    const QString refusal = Refused(Refused::Plain::noQuote).userMessage();
    const QStringList said{
        advice(ProviderError(ProviderError::CloudModelInPrivateMode{u"m"_s})),
        ProviderError(Plain::localModelRequired).userMessage(),
        refusal,
        LocalFallbackStream::unanswered(refusal).userMessage(),
        ChatSource::of(u"http://localhost:11434/v1"_s, u"m"_s).whereRepliesRun(),
        PrivateNetworkAddress::labelOf(PrivateNetworkAddress::HostClass::thisMac),
        ProofLedger::Place{ProofLedger::Place::Kind::thisMac, {}, {}}.plainName(),
        EgressGate::refusalReason(QUrl(u"https://a.test"_s), EgressGate::Reach::PrivateOnly)
            .value_or(QString()),
        ApprovalWords::footnote({.name = u"read_web_page"_s}, false),
        SystemPromptStore::loadFailedMessage(),
        advice(ScreenGlanceError(ScreenGlanceError::Case::permissionNeeded)),
        advice(ScreenGlanceError(ScreenGlanceError::Case::needsRelaunch)),
        advice(KeychainError(KeychainError::Operation::Read, {})),
        advice(DesktopActionError(DesktopActionError::ShortcutNotFound{u"n"_s, {}})),
        advice(DesktopActionError(DesktopActionError::ShortcutNotFound{u"n"_s, {u"m"_s}})),
        advice(DesktopActionError(DesktopActionError::ShortcutTimedOut{u"n"_s})),
        DesktopActionError(Desktop::shortcutsUnavailable).userMessage(),
        advice(DesktopActionError(Desktop::shortcutsUnavailable)),
        DesktopActionError(Desktop::openFailed).userMessage(),
        advice(DesktopActionError(Desktop::calendarAccessDenied)),
        advice(DesktopActionError(Desktop::calendarUnavailable)),
        WhatChangedNotice::lines().first(),
        ImageWarning::staysNear().message,
        ImageWarning::cannotSee(u"m"_s).suggestion,
        ModelServerApps::setupSteps(ModelServerApp::ollama).instruction,
        ModelServerApps::setupSteps(ModelServerApp::ollama).command,
        ModelServerApps::setupSteps(ModelServerApp::lmStudio).instruction,
        ModelServerApps::setupSteps(ModelServerApp::other).instruction,
        ModelServerApps::setupSteps(ModelServerApp::other).check,
        advice(AudioError(AudioError::Case::microphonePermissionDenied)),
        advice(AudioError(AudioError::Case::speechRecognitionPermissionDenied)),
        AudioError(AudioError::Case::speechRecognitionRestricted).userMessage(),
        advice(AudioError(AudioError::Case::microphoneRestricted)),
        AudioError(AudioError::Case::onDeviceRecognitionUnavailable).userMessage(),
        advice(AudioError(AudioError::Case::onDeviceRecognitionUnavailable)),
    };
    EXPECT_EQ(said.join(u'\n').toStdString() + '\n', TestData::text("words/original.txt"));
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
    const QString howToCheck = file["howToCheck"_L1].toString().section(u" To see whether this file"_s, 0, 0);
    const QString said = file["whatThisIs"_L1].toString() + u'\n' + howToCheck;
    EXPECT_EQ(QCryptographicHash::hash(said.toUtf8(), QCryptographicHash::Sha256).toHex(),
              "443dd26f97485794904a3a9375aed7a58d9bda79f03afd706ce71ae04dbe713b");
}

} // namespace

} // namespace morvane
