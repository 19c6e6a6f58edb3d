#include "ai/contract/AIProvider.h"

#include "support/Await.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class HandFedProvider final : public AIProvider {
public:
    AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage>, AIConfiguration,
                                           std::vector<AITool>) override
    {
        auto [stream, end] = AsyncStream<AIStreamEvent>::make();
        producer = end;
        return std::move(stream);
    }

    std::optional<AsyncStream<AIStreamEvent>::Producer> producer;
};

QCoro::Task<QStringList> readAll(AsyncStream<QString> stream)
{
    QStringList pieces;
    while (const auto piece = co_await stream.next())
        pieces.append(*piece);
    co_return pieces;
}

TEST(AIProviderTest, TheTextViewPassesTextOnAndTellsOfThinking)
{
    HandFedProvider provider;
    int thoughts = 0;
    auto texts = provider.streamText({}, {}, [&] { ++thoughts; });
    provider.producer->yield(AIStream::Thinking{});
    provider.producer->yield(AIStream::Text{u"a"_s});
    provider.producer->yield(AIStream::ToolCalls{{{u"1"_s, u"f"_s, u"{}"_s}}});
    provider.producer->yield(AIStream::TruncatedByTokenLimit{});
    provider.producer->yield(AIStream::Text{u"b"_s});
    provider.producer->finish();
    EXPECT_EQ(TestWait::await(readAll(std::move(texts))), (QStringList{u"a"_s, u"b"_s}));
    EXPECT_EQ(thoughts, 1);
}

TEST(AIProviderTest, DroppingTheTextViewStopsTheProvider)
{
    HandFedProvider provider;
    {
        const auto texts = provider.streamText({}, {});
        TestWait::settle();
        EXPECT_FALSE(provider.producer->stopToken().stop_requested());
    }
    TestWait::settle();
    EXPECT_TRUE(provider.producer->stopToken().stop_requested());
}

} // namespace

} // namespace morvane
