#include "view_models/chat/ToolLabels.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(ToolLabelsTest, NameEachToolInEachPhase)
{
    const char *table = "view_models/tool_labels.txt";
    const auto outcome = [](const QByteArray &line) {
        const QString text = QString::fromUtf8(line);
        const AIToolCall call{u"1"_s, text.section(u' ', 0, 0), text.section(u' ', 1)};
        return ToolLabels::running(call) + u'|' + ToolLabels::finished(call) + u'|' +
               ToolLabels::failed(call);
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

} // namespace morvane
