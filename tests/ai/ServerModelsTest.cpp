#include "ai/providers/ServerModels.h"
#include "ai/contract/ProviderError.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ModelServer.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(ServerModelsTest, NamesAreReadInOrderAndAnythingElseIsNoList)
{
    const char *table = "ai/model_lists.txt";
    const auto outcome = [](const QByteArray &body) {
        const auto names = ServerModels::parse(body);
        return names ? u'[' + names->join(u", ") + u']' : u"no list"_s;
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));

    QByteArray many = R"({"data":[)";
    for (int i = 0; i < 5'000; ++i)
        many += "{\"id\":\"m" + QByteArray::number(i) + "\"},";
    EXPECT_EQ(ServerModels::parse(many + R"({"id":"z"}]})")->size(), ServerModels::mostNames);
}

TEST(ServerModelsTest, ARealServerListsItsModelsAndAnAddressThatIsNoneSaysSo)
{
    ModelServer server;
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network(ledger, clock);
    AIConfiguration configuration;
    configuration.baseURLString = server.baseUrl();
    configuration.apiKey = u"secret"_s;
    const QStringList names = TestWait::await(ServerModels::list(&network, configuration, {}));
    EXPECT_TRUE(names.contains(u"practice"_s)) << names.join(u' ').toStdString();
    EXPECT_EQ(server.requests().back().headers["Authorization"_L1].toString(), u"Bearer secret"_s);

    configuration.baseURLString = u"http://example.org/v1"_s; // not encrypted, not near
    EXPECT_THROW(TestWait::await(ServerModels::list(&network, configuration, {})), ProviderError);
    EXPECT_EQ(server.requests().size(), 1U);
}

} // namespace morvane
