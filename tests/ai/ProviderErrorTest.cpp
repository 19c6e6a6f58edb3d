#include "ai/contract/ProviderError.h"

#include <gtest/gtest.h>

namespace morvane {

using E = ProviderError;
using Plain = ProviderError::Plain;

namespace {

struct Row {
    E::Case reason;
    const char *message;
    const char *suggestion; // empty: none
    bool retryable;
};

void expectWords(const std::vector<Row> &rows)
{
    for (const Row &row : rows) {
        const E error(row.reason);
        EXPECT_EQ(error.userMessage().toStdString(), row.message);
        EXPECT_EQ(error.recoverySuggestion().value_or(QString()).toStdString(), row.suggestion);
        EXPECT_EQ(error.recoverySuggestion().has_value(), *row.suggestion != '\0') << row.message;
        EXPECT_EQ(error.isRetryable(), row.retryable) << row.message;
    }
}

constexpr auto checkBaseURL =
    "Check the base URL in Settings → AI. Use https://, or http://localhost for a local server.";
constexpr auto checkConnection = "Check your internet connection or that your local server is running.";
constexpr auto checkEndpoint = "Verify the endpoint is OpenAI-compatible and try again.";
constexpr auto pickLocal = "Try again in a moment, or pick Local in the menu at the top of the sidebar.";

TEST(ProviderErrorTest, CasesWithAPayloadSayThis)
{
    expectWords(
        {Row{E::InvalidBaseURL{" %1 x"}, "The base URL “ %1 x” is not a valid URL.", checkBaseURL, false},
         Row{E::InsecureBaseURL{"http://x"},
             "Only HTTPS endpoints are allowed, except localhost and private-network servers.", checkBaseURL,
             false},
         Row{E::ServerError{500}, "The AI provider returned an error (HTTP 500).",
             "Try again. If it keeps failing, verify the model name and endpoint.", true},
         Row{E::LocalSetupFailed{"No space left."}, "No space left.",
             "Try again. If it keeps failing, check free disk space and your internet connection.", true},
         Row{E::ModelError{"out of memory"}, "The local model reported an error: out of memory",
             "Try a smaller model in Settings → AI, or close other apps to free memory.", false},
         Row{E::CloudModelInPrivateMode{"big:cloud"},
             "MorvaneGPT won't send your private data to big:cloud: it runs in Ollama's cloud, not on your "
             "computer.",
             "Choose a model that runs on your Mac or your network in Settings → AI.", false},
         Row{E::EnclaveUnverified{"Not proved."}, "Not proved.", "", false},
         Row{E::PrivateCloudBusy{"Busy."}, "Busy.", "", false},
         Row{E::PrivateCloudUnavailable{504}, "The private cloud is busy and did not start a reply in time.",
             pickLocal, true},
         Row{E::PrivateCloudUnavailable{500}, "The private cloud could not take this message.", pickLocal,
             true},
         Row{E::PrivateCloudCouldNotAnswer{"It could not."}, "It could not.", "", false}});
}

TEST(ProviderErrorTest, CasesWithoutAPayloadSayThis)
{
    expectWords(
        {Row{Plain::notConfigured, "No AI provider is configured.",
             "Open Settings → AI and set up your free local AI, or connect your own endpoint.", false},
         Row{Plain::authenticationFailed, "The AI provider rejected the API key.",
             "Check the API key in Settings → AI.", false},
         Row{Plain::rateLimited, "The AI provider is rate-limiting requests.", "Wait a moment and try again.",
             true},
         Row{Plain::networkTimeout, "The request to the AI provider timed out.", checkConnection, true},
         Row{Plain::networkUnavailable, "The AI provider could not be reached.", checkConnection, true},
         Row{Plain::malformedResponse, "The AI provider sent a response that could not be read.",
             checkEndpoint, false},
         Row{Plain::cancelled, "The response was canceled.", "", false},
         Row{Plain::emptyResponse, "The AI provider returned an empty response.", checkEndpoint, true},
         Row{Plain::modelLacksVision, "This model can't see images.",
             "Switch to a vision model (like Gemma 3) in Settings → AI, or remove the image and describe it "
             "instead.",
             false},
         Row{Plain::localModelRequired,
             "This uses your private data (screen text, memory notes or an image), which MorvaneGPT sends "
             "only to a "
             "model on this Mac or your network, and none is ready.",
             "Set up free local AI in Settings → AI.", false},
         Row{Plain::hostedBurstLimited, "That's a lot of requests at once. Give it a few minutes.",
             "Hosted AI is rate-limited per hour to keep the app affordable; local AI has no limit.",
             false}});
}

TEST(ProviderErrorTest, EachStatusHasItsErrorAndTheGroupsHoldWhatTheyShould)
{
    EXPECT_TRUE(E::forStatus(401).is(Plain::authenticationFailed));
    EXPECT_TRUE(E::forStatus(403).is(Plain::authenticationFailed));
    EXPECT_TRUE(E::forStatus(429).is(Plain::rateLimited));
    for (const int status : {199, 302, 400, 404, 422, 500, 501, 503})
        EXPECT_EQ(E::forStatus(status), E(E::ServerError{status}));

    for (const int status : {400, 404, 422, 501})
        EXPECT_TRUE(E::forStatus(status).isToolRejection()) << status;
    EXPECT_TRUE(E(Plain::malformedResponse).isToolRejection());
    for (const int status : {401, 429, 500, 503})
        EXPECT_FALSE(E::forStatus(status).isToolRejection()) << status;

    EXPECT_TRUE(E(E::EnclaveUnverified{}).isPrivateCloudFallback());
    EXPECT_TRUE(E(E::PrivateCloudBusy{}).isPrivateCloudFallback());
    EXPECT_FALSE(E(E::PrivateCloudUnavailable{504}).isPrivateCloudFallback());
}

} // namespace

} // namespace morvane
