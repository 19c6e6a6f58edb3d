#include "ai/contract/ProviderError.h"

#include "ai/contract/RefusalWords.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using E = ProviderError;
using Plain = ProviderError::Plain;

struct Words {
    QString message;
    std::optional<QString> suggestion;
    bool retryable = false;
};

const QString checkBaseURL =
    u"Check the base URL in Settings → AI. Use https://, or http://localhost for a local server."_s;
const QString checkConnection = u"Check your internet connection or that your local server is running."_s;
const QString checkCompatibility = u"Verify the endpoint is OpenAI-compatible and try again."_s;

QString product()
{
    return QString(Product::name);
}

Words wordsOf(const E::InvalidBaseURL &e)
{
    return {u"The base URL “%1” is not a valid URL."_s.arg(e.text), checkBaseURL};
}

Words wordsOf(const E::InsecureBaseURL &)
{
    return {u"Only HTTPS endpoints are allowed, except localhost and private-network servers."_s,
            checkBaseURL};
}

Words wordsOf(const E::ServerError &e)
{
    return {u"The AI provider returned an error (HTTP %1)."_s.arg(e.statusCode),
            u"Try again. If it keeps failing, verify the model name and endpoint."_s, true};
}

Words wordsOf(const E::LocalSetupFailed &e)
{
    return {e.text, u"Try again. If it keeps failing, check free disk space and your internet connection."_s,
            true};
}

Words wordsOf(const E::ModelError &e)
{
    return {u"The local model reported an error: %1"_s.arg(e.text),
            u"Try a smaller model in Settings → AI, or close other apps to free memory."_s};
}

Words wordsOf(const E::CloudModelInPrivateMode &e)
{
    return {
        product() +
            u" won't send your private data to %1: it runs in Ollama's cloud, not on your computer."_s.arg(
                e.model),
        u"Choose a model that runs on your %1 or your network in Settings → AI."_s.arg(
            DesktopWords::here().device)};
}

Words wordsOf(const E::EnclaveUnverified &e)
{
    return {e.text};
}

Words wordsOf(const E::PrivateCloudBusy &e)
{
    return {e.text};
}

Words wordsOf(const E::PrivateCloudUnavailable &e)
{
    return {e.statusCode == 504 ? u"The private cloud is busy and did not start a reply in time."_s
                                : u"The private cloud could not take this message."_s,
            u"Try again in a moment, or pick Local in the menu at the top of the sidebar."_s, true};
}

Words wordsOf(const E::PrivateCloudCouldNotAnswer &e)
{
    return {e.text};
}

Words wordsOf(E::ReplyBroken how)
{
    switch (how) {
    case E::ReplyBroken::endedEarly:
        return {u"The reply broke off before its end."_s, u"Try again."_s, true};
    case E::ReplyBroken::serverError:
        return {u"The AI provider broke this reply off with an error."_s, u"Try again."_s, true};
    case E::ReplyBroken::filtered:
        return {u"The AI provider's content filter ended this reply."_s,
                u"Ask in other words, or choose another model."_s, true};
    }
    return {};
}

Words wordsOf(Plain plain)
{
    switch (plain) {
    case Plain::notConfigured:
        return {u"No AI provider is configured."_s,
                u"Open Settings → AI and set up your free local AI, or connect your own endpoint."_s};
    case Plain::authenticationFailed:
        return {u"The AI provider rejected the API key."_s, u"Check the API key in Settings → AI."_s};
    case Plain::rateLimited:
        return {u"The AI provider is rate-limiting requests."_s, u"Wait a moment and try again."_s, true};
    case Plain::networkTimeout:
        return {u"The request to the AI provider timed out."_s, checkConnection, true};
    case Plain::networkUnavailable:
        return {u"The AI provider could not be reached."_s, checkConnection, true};
    case Plain::malformedResponse:
        return {u"The AI provider sent a response that could not be read."_s, checkCompatibility};
    case Plain::cancelled:
        return {u"The response was canceled."_s};
    case Plain::emptyResponse:
        return {u"The AI provider returned an empty response."_s, checkCompatibility, true};
    case Plain::modelLacksVision:
        return {
            u"This model can't see images."_s,
            u"Switch to a vision model (like Gemma 3) in Settings → AI, or remove the image and describe it "
            "instead."_s};
    case Plain::modelNotListed:
        return {u"The server doesn't have this model."_s, u"Pick one of its models in Settings → AI."_s};
    case Plain::localModelRequired:
        return {u"This uses your private data (screen text, memory notes or an image), which "_s + product() +
                    u" sends only to a model on this %1 or your network, and none is ready."_s.arg(
                        DesktopWords::here().device),
                u"Set up free local AI in Settings → AI."_s};
    case Plain::hostedBurstLimited:
        return {u"That's a lot of requests at once. Give it a few minutes."_s,
                u"Hosted AI is rate-limited per hour to keep the app affordable; local AI has no limit."_s};
    case Plain::contextTooLong:
        return {
            u"This chat is longer than the model can take in."_s,
            u"Start a new chat, lower Messages sent along in Settings → AI, or choose a model with more room."_s};
    case Plain::limitSpentThinking:
        return {u"The model spent the whole reply on thinking."_s,
                u"Raise Longest reply in Settings → AI, or choose a model that thinks less."_s, true};
    case Plain::replyTooLarge:
        return {u"The AI provider sent more than %1 reads in one reply."_s.arg(product()),
                checkCompatibility};
    case Plain::tooManyCalls:
        return {u"The model asked for too many abilities at once."_s,
                u"Try again, or choose another model."_s, true};
    }
    return {};
}

Words wordsOf(const E &error)
{
    return std::visit([](const auto &reason) { return wordsOf(reason); }, error.reason());
}

} // namespace

ProviderError ProviderError::forStatus(int status)
{
    if (status == 401 || status == 403)
        return Case(Plain::authenticationFailed);
    if (status == 429)
        return Case(Plain::rateLimited);
    return Case(ServerError{status});
}

ProviderError ProviderError::quoting(QString words) const
{
    ProviderError quoted = *this;
    quoted.m_serverWords = std::move(words);
    return quoted;
}

// A server that was started without tools answers 500 and names them, or says so in the place of a reply. One
// that refuses a request without a word has not judged it: an old server does so on a connection that it
// should have closed. What names anything else would be refused without tools as well.
bool ProviderError::isToolRejection() const
{
    using RefusalWords::Subject;
    static constexpr std::array rejecting{400, 404, 422, 501};
    const Subject subject = RefusalWords::subjectOf(m_serverWords);
    const auto *server = std::get_if<ServerError>(&reason());
    if (!server)
        return is(Plain::malformedResponse) ||
               (subject == Subject::tools && reason() == Case(ReplyBroken::serverError));
    if (server->statusCode >= 500 && subject == Subject::tools)
        return true;
    const bool isWordless = server->statusCode == 400 && m_serverWords.isEmpty();
    return subject != Subject::another && !isWordless &&
           std::find(rejecting.begin(), rejecting.end(), server->statusCode) != rejecting.end();
}

bool ProviderError::isPrivateCloudFallback() const
{
    return std::holds_alternative<EnclaveUnverified>(reason()) ||
           std::holds_alternative<PrivateCloudBusy>(reason());
}

QString ProviderError::userMessage() const
{
    return wordsOf(*this).message;
}

std::optional<QString> ProviderError::recoverySuggestion() const
{
    return wordsOf(*this).suggestion;
}

bool ProviderError::isRetryable() const
{
    return wordsOf(*this).retryable;
}

} // namespace morvane
