#include "utils/log/Log.h"

#include "support/LogCapture.h"
#include "utils/log/RecentLog.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(LogTest, PrivateContentNeverReachesTheLine)
{
    const LogCapture capture;
    Log::error(Log::Category::AIProvider, "HTTP %ld from %{public}s: %s, retry %{bool}d"_L1,
               {503, u"host"_s, u"secret words"_s, true});
    Log::info(Log::Category::App, "100%s sure"_L1);
    EXPECT_EQ(capture.lines(), (QStringList{u"ai-provider: HTTP 503 from host: <private>, retry true"_s,
                                            u"app: 100%s sure"_s}));
    const QStringList recent = RecentLog::lines();
    EXPECT_TRUE(recent.last().endsWith(u"  ai.morvane.macos.app: 100%s sure"_s));
    EXPECT_TRUE(
        recent.at(recent.size() - 2)
            .endsWith(u"ai.morvane.macos.ai-provider: HTTP 503 from <text>: <private>, retry true"_s));
    for (int i = 0; i < 500; ++i)
        Log::info(Log::Category::App, "line %ld"_L1, {i});
    EXPECT_EQ(RecentLog::lines().size(), RecentLog::most);
    EXPECT_TRUE(RecentLog::lines().last().endsWith(u"line 499"_s));
}

} // namespace morvane
