#include "ai/contract/BaseURL.h"

#include "ai/contract/ProviderError.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

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
