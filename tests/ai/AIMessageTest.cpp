#include "ai/contract/AIMessage.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Role = AIMessage::Role;

namespace {

struct WireCase {
    AIMessage message;
    const char *json;
};

const QString image = u"data:image/png;base64,AA=="_s;

TEST(AIMessageTest, TheWireFormHoldsTheKeysThatTheMessageNeedsAndNoOthers)
{
    const std::vector<WireCase> cases{
        WireCase{{Role::system, u"Be kind."_s}, R"({"role": "system", "content": "Be kind."})"},
        WireCase{{Role::user, u"Look"_s, {}, {}, {}, {image, image}},
                 R"({"role": "user", "content": [
                     {"type": "text", "text": "Look"},
                     {"type": "image_url", "image_url": {"url": "data:image/png;base64,AA=="}},
                     {"type": "image_url", "image_url": {"url": "data:image/png;base64,AA=="}}]})"},
        WireCase{{Role::user, {}, {}, {}, {}, {image}},
                 R"({"role": "user", "content": [
                     {"type": "image_url", "image_url": {"url": "data:image/png;base64,AA=="}}]})"},
        WireCase{{Role::assistant, {}, {{u"c1"_s, u"f"_s, u"{ not parsed"_s}}},
                 R"({"role": "assistant", "content": "", "tool_calls": [
                     {"id": "c1", "type": "function", "function": {"name": "f", "arguments": "{ not parsed"}}]})"},
        WireCase{{Role::tool, u"42"_s, {}, u"c1"_s, u"f"_s},
                 R"({"role": "tool", "content": "42", "tool_call_id": "c1", "name": "f"})"}};
    for (const WireCase &c : cases) {
        const QJsonObject expected = QJsonDocument::fromJson(c.json).object();
        ASSERT_FALSE(expected.isEmpty()) << c.json;
        EXPECT_EQ(c.message.wireForm(), expected);
    }
}

} // namespace

} // namespace morvane
