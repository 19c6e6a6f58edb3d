#include "ai/contract/ProviderError.h"

#include "ai/contract/BaseURL.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using E = ProviderError;
using Plain = ProviderError::Plain;

namespace {

TEST(ProviderErrorTest, SaysTheAgreedWordsAndEachStatusHasItsError)
{
    std::string words;
    std::vector<E::Case> reasons{E::InvalidBaseURL{" %1 x"},
                                 E::InsecureBaseURL{"http://x"},
                                 E::ServerError{500},
                                 E::LocalSetupFailed{"No space left."},
                                 E::ModelError{"out of memory"},
                                 E::CloudModelInPrivateMode{"big:cloud"},
                                 E::EnclaveUnverified{"Not proved."},
                                 E::PrivateCloudBusy{"Busy."},
                                 E::PrivateCloudUnavailable{504},
                                 E::PrivateCloudUnavailable{500},
                                 E::PrivateCloudCouldNotAnswer{"It could not."},
                                 E::ReplyBroken::endedEarly,
                                 E::ReplyBroken::serverError,
                                 E::ReplyBroken::filtered};
    for (int plain = 0; plain <= static_cast<int>(Plain::tooManyCalls); ++plain)
        reasons.emplace_back(static_cast<Plain>(plain));

    for (const int status : {199, 302, 400, 401, 403, 404, 422, 429, 501, 503})
        reasons.push_back(E::forStatus(status).reason());

    for (const E::Case &reason : reasons) {
        const E error(reason);
        words += error.userMessage().toStdString() + "\n    " +
                 error.recoverySuggestion().value_or("(no suggestion)").toStdString() +
                 (error.isRetryable() ? "\n    may be tried again" : "") +
                 (error.isToolRejection() ? "\n    may be about the tools" : "") +
                 (error.isPrivateCloudFallback() ? "\n    another model may answer\n" : "\n");
    }
    EXPECT_EQ(words, TestData::text("ai/provider_errors.txt"));
}

// The chat-completions address, or why there is none; an error names the text as it was given.
QString outcome(const QString &given)
{
    try {
        return BaseURL::chatCompletions(given).toString(QUrl::FullyEncoded);
    } catch (const ProviderError &error) {
        if (error.reason() == ProviderError::Case(ProviderError::InvalidBaseURL{given}))
            return u"invalid"_s;
        if (error.reason() == ProviderError::Case(ProviderError::InsecureBaseURL{given}))
            return u"insecure"_s;
        return u"another error"_s;
    }
}

TEST(BaseURLTest, EachLeadsToItsEndpointOrIsRefused)
{
    const char *table = "ai/base_urls.txt";
    EXPECT_EQ(TestData::transcript(table, [](const QByteArray &line) { return outcome(line); }),
              TestData::text(table));
}

} // namespace

} // namespace morvane
