#include "ai/providers/ServerModels.h"
#include "ai/contract/ProviderError.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ModelServer.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(ServerModelsTest, NamesAreReadInOrderAndAnythingElseIsNoList)
{
    const struct {
        const char *body;
        std::optional<QStringList> names;
    } rows[] = {
        {R"({"data":[{"id":"b10"},{"id":"b9"},{"id":"A"},{"id":"b9"}]})",
         QStringList({u"A"_s, u"b10"_s, u"b9"_s})},
        {R"({"data":[{"id":7},{"id":""},{},"x",null,{"id":"ok"}]})", QStringList(u"ok"_s)},
        {R"({"data":[]})", QStringList()},
        {R"({"data":{}})", std::nullopt},
        {R"({"models":[]})", std::nullopt},
        {R"([{"id":"a"}])", std::nullopt},
        {"<html>", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ServerModels::parse(row.body), row.names) << row.body;

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
