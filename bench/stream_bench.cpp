// What a streamed reply costs from the socket's bytes to its events, beside parsing the JSON of the same
// lines and doing nothing with it.

#include "ai/providers/LineSplitter.h"
#include "ai/providers/OpenAICompatibleProvider.h"
#include "ai/providers/StreamedReply.h"

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

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"ai.morvane.*=false"_s);
    benchmark::RegisterBenchmark("stream_parse", parse);
    benchmark::RegisterBenchmark("stream_parse/yardstick", bareJson);
    benchmark::RegisterBenchmark("stream_provider", provide);
    benchmark::RegisterBenchmark("stream_provider/yardstick", bareJson);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
