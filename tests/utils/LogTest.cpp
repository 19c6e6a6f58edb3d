#include "utils/log/Log.h"

#include "support/LogCapture.h"

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
}

} // namespace morvane
