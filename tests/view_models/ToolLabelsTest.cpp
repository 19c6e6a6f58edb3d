#include "view_models/chat/ToolLabels.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(ToolLabelsTest, NameEachToolInEachPhase)
{
    const struct {
        QString tool;
        QString arguments;
        QStringList labels; // running, finished, failed
    } rows[] = {
        {u"search_web"_s,
         uR"({"query":"a"})"_s,
         {u"Searching the web…"_s, u"Searched the web for “a”"_s, u"Couldn't search the web"_s}},
        {u"read_web_page"_s,
         uR"({"url":"https://h.example/x"})"_s,
         {u"Reading h.example…"_s, u"Read h.example"_s, u"Couldn't read h.example"_s}},
        {u"read_web_page"_s,
         u"broken"_s,
         {u"Reading a page…"_s, u"Read a page"_s, u"Couldn't read a page"_s}},
        {u"look_at_screen"_s,
         {},
         {u"Looking at your screen…"_s, u"Looked at your screen"_s, u"Couldn't read the screen"_s}},
        {u"remember"_s, {}, {u"Saving a note…"_s, u"Remembered something"_s, u"Couldn't save that note"_s}},
        {u"forget"_s,
         {},
         {u"Forgot what you asked"_s, u"Forgot what you asked"_s, u"Couldn't forget that"_s}},
        {u"open_link"_s, {}, {u"Opening a link…"_s, u"Opened a link"_s, u"Didn't open the link"_s}},
        {u"create_calendar_event"_s,
         {},
         {u"Adding a calendar event…"_s, u"Added a calendar event"_s, u"Didn't add the event"_s}},
        {u"run_shortcut"_s,
         uR"({"name":"Tea"})"_s,
         {u"Running “Tea”…"_s, u"Ran “Tea”"_s, u"Didn't run “Tea”"_s}},
        {u"run_shortcut"_s,
         uR"({"name":5})"_s,
         {u"Running “a shortcut”…"_s, u"Ran “a shortcut”"_s, u"Didn't run “a shortcut”"_s}},
        {u"new_tool"_s, {}, {u"Using new_tool…"_s, u"Used new_tool"_s, u"Used new_tool"_s}},
    };
    for (const auto &row : rows) {
        const AIToolCall call{u"1"_s, row.tool, row.arguments};
        EXPECT_EQ(
            (QStringList{ToolLabels::running(call), ToolLabels::finished(call), ToolLabels::failed(call)}),
            row.labels);
    }
}

} // namespace morvane
