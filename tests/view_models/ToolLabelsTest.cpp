#include "view_models/chat/ToolLabels.h"

#include <gtest/gtest.h>

namespace morvane {

TEST(ToolLabelsTest, NameEachToolInEachPhase)
{
    const struct {
        const char *tool;
        const char *arguments;
        const char *labels; // running|finished|failed
    } rows[] = {
        {"search_web", R"({"query":"a"})",
         "Searching the web…|Searched the web for “a”|Couldn't search the web"},
        {"read_web_page", R"({"url":"https://h.example/x"})",
         "Reading h.example…|Read h.example|Couldn't read h.example"},
        {"read_web_page", "broken", "Reading a page…|Read a page|Couldn't read a page"},
        {"look_at_screen", "", "Looking at your screen…|Looked at your screen|Couldn't read the screen"},
        {"remember", "", "Saving a note…|Remembered something|Couldn't save that note"},
        {"forget", "", "Forgot what you asked|Forgot what you asked|Couldn't forget that"},
        {"open_link", "", "Opening a link…|Opened a link|Didn't open the link"},
        {"create_calendar_event", "", "Adding a calendar event…|Added a calendar event|Didn't add the event"},
        {"run_shortcut", R"({"name":"Tea"})", "Running “Tea”…|Ran “Tea”|Didn't run “Tea”"},
        {"run_shortcut", R"({"name":5})", "Running “a shortcut”…|Ran “a shortcut”|Didn't run “a shortcut”"},
        {"new_tool", "", "Using new_tool…|Used new_tool|Used new_tool"},
    };
    for (const auto &row : rows) {
        const AIToolCall call{QStringLiteral("1"), QString::fromUtf8(row.tool),
                              QString::fromUtf8(row.arguments)};
        EXPECT_EQ(
            (QStringList{ToolLabels::running(call), ToolLabels::finished(call), ToolLabels::failed(call)})
                .join(u'|'),
            QString::fromUtf8(row.labels));
    }
}

} // namespace morvane
