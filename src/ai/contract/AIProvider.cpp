#include "ai/contract/AIProvider.h"

namespace morvane {

namespace {

QCoro::Task<> relayText(AsyncStream<AIStreamEvent> events, AsyncStream<QString>::Producer producer,
                        std::function<void()> onThinking)
{
    try {
        while (auto event = co_await events.next(producer.stopToken())) {
            if (auto *text = std::get_if<AIStream::Text>(&*event))
                producer.yield(std::move(text->piece));
            else if (std::holds_alternative<AIStream::Thinking>(*event) && onThinking)
                onThinking();
        }
        producer.finish();
    } catch (...) {
        producer.fail(std::current_exception());
    }
}

} // namespace

AsyncStream<QString> AIProvider::streamText(std::vector<AIMessage> messages, AIConfiguration configuration,
                                            std::function<void()> onThinking)
{
    auto [stream, producer] = AsyncStream<QString>::make();
    relayText(streamReply(std::move(messages), std::move(configuration), {}), producer,
              std::move(onThinking));
    return std::move(stream);
}

QString AIConnectionTesting::testMessage()
{
    return QStringLiteral("Reply with the single word: ok");
}

AITool AIConnectionTesting::testTool()
{
    using Kind = AITool::Parameter::Kind;
    AITool tool;
    tool.name = QStringLiteral("check_connection");
    tool.description = QStringLiteral("Shows that tools can be called. It does nothing.");
    tool.parameters = {{QStringLiteral("word"), Kind::string, QStringLiteral("The word ok."), true, {}}};
    return tool;
}

std::vector<AIMessage> AIConnectionTesting::trialMessages(const std::vector<AITool> &tools)
{
    const QString message = tools.empty()
                                ? testMessage()
                                : QStringLiteral("Call the tool %1 with the word ok.").arg(tools[0].name);
    return {{AIMessage::Role::user, message, {}, {}, {}, {}}};
}

} // namespace morvane
