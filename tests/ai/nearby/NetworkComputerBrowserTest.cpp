#include "ai/nearby/NetworkComputerBrowser.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Reason = BrowseFailure::Reason;

namespace {

// A network that tells what the test says, also to browsers that are gone.
class ScriptedNetwork final : public ServiceBrowsing {
public:
    std::unique_ptr<ServiceBrowse> browse(QString type, Handlers handlers) override
    {
        types += type;
        asked.push_back(std::move(handlers));
        return std::make_unique<Browse>(live);
    }
    // By the place of its type, of the newest sweep.
    void tell(std::size_t type, std::vector<BrowsedService> all)
    {
        asked[asked.size() - 4 + type].resultsChanged(std::move(all));
    }
    void fail(std::size_t type, Reason reason) { asked[asked.size() - 4 + type].failed({reason, u"why"_s}); }

    QStringList types;
    std::vector<Handlers> asked;
    int live = 0;

private:
    struct Browse final : ServiceBrowse {
        explicit Browse(int &count)
            : live(++count)
        {}
        ~Browse() override { --live; }
        int &live;
    };
};

class NetworkComputerBrowserTest : public testing::Test {
protected:
    QString shown() const
    {
        QStringList rows;
        for (const auto &computer : browser.computers())
            rows += computer.displayName + u'@' + computer.hostname;
        return rows.join(u' ');
    }

    ScriptedNetwork network;
    ManualClock clock;
    NetworkComputerBrowser browser{network, clock};
};

TEST_F(NetworkComputerBrowserTest, MergesWhatItSeesAndSettles)
{
    browser.start();
    EXPECT_EQ(network.types.join(u' '), u"_companion-link._tcp _ssh._tcp _smb._tcp _rfb._tcp"_s);
    network.tell(3, {{u"rfb of one"_s, u"One.local"_s}, {u"Two"_s, {}}});
    network.tell(1, {{u"b one"_s, u"one.local"_s}});
    network.tell(0, {{u"a one"_s, u"one.local"_s}});
    EXPECT_EQ(shown(), u"a one@one.local Two@Two.local"_s);
    network.tell(0, {});
    EXPECT_EQ(shown(), u"b one@one.local Two@Two.local"_s);

    clock.advance(2999ms);
    EXPECT_TRUE(browser.isBrowsing());
    clock.advance(1ms);
    EXPECT_FALSE(browser.isBrowsing());
    EXPECT_EQ(network.live, 0);

    browser.start();
    network.asked[1].resultsChanged({{u"late"_s, u"late.local"_s}}); // of the first sweep
    network.asked[1].failed({Reason::refused, {}});
    EXPECT_EQ(shown(), QString());
    EXPECT_EQ(network.live, 4);
    browser.stop();
    network.tell(0, {{u"late"_s, u"late.local"_s}});
    EXPECT_EQ(shown(), QString());
    EXPECT_FALSE(browser.isBrowsing());
}

TEST_F(NetworkComputerBrowserTest, TellsARefusalFromANetworkThatCannotBeSearched)
{
    constexpr auto refused = Reason::refused;
    constexpr auto none = Reason::noSearch;
    const struct {
        std::array<Reason, 4> reasons;
        bool isDenied;
        bool isMissing;
    } rows[] = {{{refused, refused, refused, refused}, true, false},
                {{none, none, none, none}, false, true},
                {{refused, none, Reason::failed, refused}, false, false}};
    for (const auto &row : rows) {
        browser.start();
        for (std::size_t type = 0; type < 4; ++type) {
            EXPECT_TRUE(browser.isBrowsing());
            EXPECT_FALSE(browser.localNetworkDenied() || browser.browseFailure());
            network.fail(type, row.reasons[type]);
        }
        EXPECT_FALSE(browser.isBrowsing());
        EXPECT_EQ(network.live, 0);
        EXPECT_EQ(browser.localNetworkDenied(), row.isDenied);
        EXPECT_EQ(browser.isSearchMissing(), row.isMissing);
        EXPECT_EQ(browser.browseFailure().has_value(), !row.isDenied);
    }
    browser.start();
    network.fail(0, refused);
    network.tell(1, {{u"One"_s, {}}});
    clock.advance(3s);
    EXPECT_EQ(shown(), u"One@One.local"_s);
    EXPECT_FALSE(browser.localNetworkDenied() || browser.browseFailure());
}

} // namespace

} // namespace morvane
