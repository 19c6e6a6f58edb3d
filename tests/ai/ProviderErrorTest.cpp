#include "ai/contract/ProviderError.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using E = ProviderError;
using Plain = ProviderError::Plain;

namespace {

TEST(ProviderErrorTest, SaysTheAgreedWords)
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
                                 E::PrivateCloudCouldNotAnswer{"It could not."}};
    for (int plain = 0; plain <= static_cast<int>(Plain::hostedBurstLimited); ++plain)
        reasons.emplace_back(static_cast<Plain>(plain));

    for (const E::Case &reason : reasons) {
        const E error(reason);
        words += error.userMessage().toStdString() + "\n    " +
                 error.recoverySuggestion().value_or("(no suggestion)").toStdString() +
                 (error.isRetryable() ? "\n    may be tried again\n" : "\n");
    }
    EXPECT_EQ(words, TestData::text("ai/provider_errors.txt"));
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
