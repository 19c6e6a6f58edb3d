// What a streamed reply costs from the socket's bytes to its events, and from there to the row that is drawn,
// beside parsing the JSON of the same lines and doing nothing with it.

#include "ai/providers/LineSplitter.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/providers/StreamedReply.h"
#include "async/Clock.h"
#include "models/ChatMessage.h"
#include "security/ProcessKeySealing.h"
#include "view_models/blocks/ReplyBlocksModel.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/TurnRecorder.h"
#include "view_models/companion/CompanionViewModel.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLoggingCategory>

#include <benchmark/benchmark.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int pieceCount = 2000;
constexpr qsizetype socketRead = 16 * 1024; // what libcurl hands over at once

// A data line as common servers write it.
QByteArray payload(int number)
{
    return R"({"id":"chatcmpl-8f2b","object":"chat.completion.chunk","created":1772366400,"model":"some-model",)"
           R"("choices":[{"index":0,"delta":{"content":" piece)" +
           QByteArray::number(number) + R"("},"finish_reason":null}]})";
}

const std::vector<QByteArray> &payloads()
{
    static const auto all = [] {
        std::vector<QByteArray> made;
        for (int i = 0; i < pieceCount; ++i)
            made.push_back(payload(i));
        return made;
    }();
    return all;
}

const std::vector<QByteArray> &socketPieces()
{
    static const auto all = [] {
        QByteArray body;
        for (const QByteArray &json : payloads())
            body += "data: " + json + "\n\n";
        body += "data: [DONE]\n\n";
        std::vector<QByteArray> cut;
        for (qsizetype at = 0; at < body.size(); at += socketRead)
            cut.push_back(body.mid(at, socketRead));
        return cut;
    }();
    return all;
}

void countPieces(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * pieceCount);
}

void bareJson(benchmark::State &state)
{
    for (auto _ : state) {
        for (const QByteArray &json : payloads()) {
            auto document = QJsonDocument::fromJson(json);
            benchmark::DoNotOptimize(document);
        }
    }
    countPieces(state);
}

// Splitting, classifying and yielding, without a task or an event loop.
void parse(benchmark::State &state)
{
    for (auto _ : state) {
        auto [stream, events] = AsyncStream<AIStreamEvent>::make();
        StreamedReply reply;
        LineSplitter lines(OpenAICompatibleProvider::longestLine);
        for (const QByteArray &piece : socketPieces()) {
            lines.add(piece);
            while (const auto line = lines.next())
                reply.add(*line, events);
            while (auto event = stream.takeBuffered())
                benchmark::DoNotOptimize(event);
        }
    }
    countPieces(state);
}

// Answers every request with the pieces, as a socket would deliver them: one in each turn of the event loop.
class ReplaySession final : public HttpSession {
public:
    QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token) override
    {
        auto [body, producer] = AsyncStream<QByteArray>::make();
        deliver(producer, 0);
        HttpResponse response{200, request.url, {}, std::move(body)};
        co_return response;
    }

private:
    static void deliver(AsyncStream<QByteArray>::Producer producer, std::size_t next)
    {
        QMetaObject::invokeMethod(
            qApp,
            [producer, next]() mutable {
                producer.yield(socketPieces()[next]);
                if (next + 1 < socketPieces().size())
                    deliver(producer, next + 1);
                else
                    producer.finish();
            },
            Qt::QueuedConnection);
    }
};

class NoNetwork final : public HttpSessionProviding {
public:
    std::shared_ptr<HttpSession> session(EgressFeature, SensitiveDataSet) override { return nullptr; }
};

QCoro::Task<> readAll(AsyncStream<AIStreamEvent> stream, bool *done)
{
    while (auto event = co_await stream.next())
        benchmark::DoNotOptimize(event);
    *done = true;
}

// The whole way through the provider: session, task, event loop, consumer.
void provide(benchmark::State &state)
{
    NoNetwork network;
    OpenAICompatibleProvider provider(network, std::make_shared<ReplaySession>());
    AIConfiguration configuration;
    configuration.baseURLString = u"http://localhost/v1"_s;
    configuration.model = u"some-model"_s;
    for (auto _ : state) {
        bool done = false;
        readAll(provider.streamReply({}, configuration, {}), &done);
        while (!done)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    countPieces(state);
}

// Goes on by itself as pieces are taken, fifty in a second; what waits for it is never called.
class PacedClock final : public Clock {
public:
    QDateTime now() const override { return m_start.addMSecs(m_elapsed.count()); }
    std::chrono::milliseconds elapsed() const override { return m_elapsed; }
    std::unique_ptr<Alarm> after(std::chrono::milliseconds, std::function<void()>) override
    {
        return std::make_unique<Alarm>();
    }
    void pieceCame() { m_elapsed += std::chrono::milliseconds(20); }

private:
    QDateTime m_start = QDateTime::currentDateTimeUtc();
    std::chrono::milliseconds m_elapsed{0};
};

// Events as a turn records them: the text is sealed, the row is told, and the view reads the row's text into
// the blocks that it draws. A paragraph has twenty pieces.
void drawnRow(benchmark::State &state)
{
    const auto sealing = std::make_shared<ProcessKeySealing>();
    for (auto _ : state) {
        PacedClock clock;
        CompanionViewModel companion(clock);
        const auto reply = ChatMessage::create(sealing, {.id = QUuid::createUuid(),
                                                         .role = MessageRole::assistant,
                                                         .createdAt = clock.now(),
                                                         .status = MessageStatus::streaming});
        MessageListModel messages(clock);
        messages.setMessages({reply});
        messages.beginIndicator(reply->id());
        ReplyBlocksModel blocks;
        blocks.setGrowing(true);
        QObject::connect(&messages, &MessageListModel::dataChanged, &blocks, [&](const QModelIndex &row) {
            blocks.setText(row.data(MessageListModel::TextRole).toString());
        });
        TurnRecorder recorder(reply, {}, messages, companion, clock);
        for (int i = 0; i < pieceCount; ++i) {
            clock.pieceCame();
            recorder.apply(
                Agent::Text{u" piece"_s + QString::number(i) + (i % 20 == 19 ? u"\n\n"_s : QString())});
        }
        recorder.store();
        if (blocks.rowCount() != pieceCount / 20)
            state.SkipWithError("the row did not show every piece");
    }
    countPieces(state);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"ai.morvane.*=false"_s);
    benchmark::RegisterBenchmark("stream_parse", parse);
    benchmark::RegisterBenchmark("stream_parse/yardstick", bareJson);
    benchmark::RegisterBenchmark("stream_provider", provide);
    benchmark::RegisterBenchmark("stream_provider/yardstick", bareJson);
    benchmark::RegisterBenchmark("stream_drawn_row", drawnRow);
    benchmark::RegisterBenchmark("stream_drawn_row/yardstick", bareJson);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
