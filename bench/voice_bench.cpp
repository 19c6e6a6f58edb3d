// From a press to a microphone that listens, from sound to words, and from a reply to its first sound, beside
// a sound server of the bench's own whose devices have no hardware behind them.

#include "LongestBlock.h"

#include "async/Work.h"
#include "audio/AudioPermissionService.h"
#include "audio/SoundServer.h"
#include "audio/SpeechRecognitionService.h"
#include "audio/TextToSpeechService.h"
#include "audio/VoiceDebugLog.h"
#include "audio/engines/FliteSynthesizer.h"
#include "audio/engines/PocketSphinxRecognizer.h"
#include "audio/engines/SphinxDecoder.h"
#include "platform/linux/DesktopAudio.h"
#include "support/Await.h"

#include <QAudioSource>
#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMediaDevices>

#include <benchmark/benchmark.h>

#include <ctime>
#include <optional>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

const QString sentence =
    u"please remember to call my brother in the morning and ask him about the train that leaves for the city"_s;

// Of twenty words each, about this and that.
const QStringList sentences{
    u"the children found an old wooden box in the garden and wanted to know who had put it there and why"_s,
    u"i have to be at the airport by six in the morning so please wake me up before the sun comes up"_s,
    u"the new bridge will make it easier for people in the north of the city to get to work on time"_s,
    u"write a short message to my teacher and say that i can not come to class because i feel sick today"_s,
    u"they closed the road for two weeks because the heavy rain had washed away a large part of the hill"_s,
    u"what should i cook for dinner tonight if i have only potatoes and onions and a little bit of cheese left"_s,
    u"my grandfather used to tell us stories about the winter when the river froze and everyone walked to the other side"_s,
    u"the team played very well in the first half but then lost the game when their best man had to leave"_s,
    u"please explain how a bank makes money and what happens to the savings of the people when it has to close"_s,
    u"she opened the letter with shaking hands and read it twice before she was able to say anything at all"_s,
    u"we are looking for a quiet room with two beds and a view of the water for the first week of june"_s,
    u"the doctor told him to drink more water and to walk for half an hour every day after work"_s,
    u"could you look for a good restaurant near the station that is open late and does not cost too much money"_s,
    u"in the last ten years the price of a house in this part of the country has gone up more than wages"_s,
    u"give me three good reasons to learn to play the piano when you are older than forty and have no time"_s,
    u"the cat sat in the window all day long and watched the snow fall on the roofs of the small town"_s};

// With what a person leaves before and behind it.
std::vector<std::int16_t> spoken(const QString &words, const QString &voice = {})
{
    std::vector<std::int16_t> made(AudioQueue::sampleRate / 3);
    FliteSynthesizer().synthesize({words, voice, 0}, [&](std::span<const std::int16_t> more) {
        made.insert(made.end(), more.begin(), more.end());
        return true;
    });
    made.resize(made.size() + AudioQueue::sampleRate / 2);
    return made;
}

const std::vector<std::int16_t> &speech()
{
    static const std::vector<std::int16_t> sound = spoken(sentence);
    return sound;
}

QString heardBy(SphinxDecoder &decoder, std::span<const std::int16_t> sound)
{
    decoder.begin();
    while (!sound.empty()) {
        const auto piece = sound.first(std::min<std::size_t>(sound.size(), 1024));
        decoder.take(piece);
        sound = sound.subspan(piece.size());
    }
    decoder.end();
    return decoder.words();
}

// The words of the one text that stand in the other in the same order.
int common(const QStringList &said, const QStringList &heard)
{
    std::vector<std::vector<int>> best(static_cast<std::size_t>(said.size()) + 1,
                                       std::vector<int>(static_cast<std::size_t>(heard.size()) + 1));
    for (std::size_t i = 1; i < best.size(); ++i)
        for (std::size_t j = 1; j < best[i].size(); ++j)
            best[i][j] = said[static_cast<qsizetype>(i) - 1] == heard[static_cast<qsizetype>(j) - 1]
                             ? best[i - 1][j - 1] + 1
                             : std::max(best[i - 1][j], best[i][j - 1]);
    return best.back().back();
}

double milliseconds(const QElapsedTimer &since)
{
    return static_cast<double>(since.nsecsElapsed()) / 1e6;
}

double processorSeconds(clockid_t clock)
{
    timespec now{};
    ::clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

void tell(benchmark::State &state, double value, const char *unit)
{
    state.counters["value"] = value;
    state.SetLabel(unit);
}

// What stands between the person and the words, as the program puts it together.
struct Talking {
    ~Talking()
    {
        service.reset();
        TestWait::settle();
        work.end();
    }
    double press()
    {
        QElapsedTimer since;
        since.start();
        TestWait::await(service->startRecording());
        return milliseconds(since);
    }
    void speak(SoundServer &server) const
    {
        server.speakInto(speech());
        TestWait::until([&] { return !server.isSpeaking(); });
    }

    QTemporaryDir folder;
    SystemClock clock;
    Work work{clock};
    MicrophonePermission permission;
    AudioPermissionService permissions{permission};
    PocketSphinxRecognizer recognizer{clock, work};
    VoiceDebugLog log{folder.filePath(u"voice-debug.log"_s), clock, work};
    DesktopAudio desktop;
    std::optional<SpeechRecognitionService> service{
        std::in_place,
        SpeechRecognitionService::Services{.permissions = permissions,
                                           .recognizer = recognizer,
                                           .clock = clock,
                                           .log = log,
                                           .makeEngine = [this] { return desktop.makeEngine(); },
                                           .locale = [] { return QLocale(QLocale::English); }}};
};

SoundServer &server()
{
    static SoundServer started;
    return started;
}

void bareStart(benchmark::State &state)
{
    server();
    double took = 0;
    for (auto _ : state) {
        QElapsedTimer since;
        since.start();
        QAudioFormat format;
        format.setSampleRate(AudioQueue::sampleRate);
        format.setChannelCount(1);
        format.setSampleFormat(QAudioFormat::Int16);
        QBuffer sound;
        sound.open(QIODevice::WriteOnly);
        QAudioSource source(QMediaDevices::audioInputs().value(0), format);
        source.start(&sound);
        took += milliseconds(since);
    }
    tell(state, took / static_cast<double>(state.iterations()), "ms");
}
BENCHMARK(bareStart)->Name("bare_audio_source_start")->Iterations(3);

void cold(benchmark::State &state)
{
    server();
    double took = 0;
    for (auto _ : state) {
        Talking talking;
        took += talking.press();
        talking.service->cancelRecording();
    }
    tell(state, took / static_cast<double>(state.iterations()), "ms");
}
BENCHMARK(cold)->Name("press_to_listening_cold")->Iterations(3);

void warm(benchmark::State &state)
{
    Talking talking;
    talking.press();
    talking.speak(server());
    TestWait::await(talking.service->stopRecording());
    double took = 0;
    for (auto _ : state) {
        TestWait::settle();
        took += talking.press();
        talking.service->cancelRecording();
    }
    tell(state, took / static_cast<double>(state.iterations()), "ms");
}
BENCHMARK(warm)->Name("press_to_listening_warm")->Iterations(3);

// Seconds of one core for each second of sound; the model is loaded already, as it is when the first words
// are long enough.
void recognition(benchmark::State &state)
{
    SphinxDecoder decoder(PocketSphinxRecognizer::packagedModel());
    const double before = processorSeconds(CLOCK_THREAD_CPUTIME_ID);
    for (auto _ : state)
        benchmark::DoNotOptimize(heardBy(decoder, speech()));
    const double seconds = static_cast<double>(speech().size()) / AudioQueue::sampleRate;
    tell(state,
         (processorSeconds(CLOCK_THREAD_CPUTIME_ID) - before) /
             (seconds * static_cast<double>(state.iterations())),
         "s/s");
}
BENCHMARK(recognition)->Name("recognition_of_a_second_on_one_core")->Iterations(1);

// Clean speech to a model that has never heard the voice.
void wordsMissed(benchmark::State &state)
{
    for (auto _ : state) {
        qsizetype words = 0;
        qsizetype right = 0;
        for (const QString &each : sentences) {
            SphinxDecoder decoder(PocketSphinxRecognizer::packagedModel());
            const QStringList said = each.split(u' ');
            words += said.size();
            right += common(said, heardBy(decoder, spoken(each)).split(u' '));
        }
        tell(state, 100.0 * static_cast<double>(words - right) / static_cast<double>(words), "%");
    }
}
BENCHMARK(wordsMissed)->Name("words_missed_of_clean_speech")->Iterations(1);

double longestBlockOf(const std::function<void()> &work)
{
    LongestBlock block;
    work();
    block.end();
    return block.milliseconds();
}

// Starting the process that speaks is the bench's own and doesn't count.
void blocksWhileTalking(benchmark::State &state)
{
    for (auto _ : state) {
        Talking talking;
        const double before = longestBlockOf([&] { talking.press(); });
        server().speakInto(speech());
        const double then = longestBlockOf([&] {
            TestWait::until([] { return !server().isSpeaking(); });
            TestWait::await(talking.service->stopRecording());
        });
        tell(state, std::max(before, then), "ms");
    }
}
BENCHMARK(blocksWhileTalking)->Name("longest_block_while_talking")->Iterations(1);

// To the first sound that comes out of the loudspeaker.
void speakingStarts(benchmark::State &state)
{
    const QString reply = (sentence + u". "_s).repeated(20'000 / (sentence.size() + 2) + 1);
    for (auto _ : state) {
        SystemClock clock;
        Work work(clock);
        DesktopAudio desktop;
        FliteSynthesizer voice;
        TextToSpeechService speaking(voice, desktop.output, work);
        server().beginRecording();
        QElapsedTimer since;
        since.start();
        std::stop_source stop;
        const auto outcome = std::make_shared<TestWait::Outcome<void>>();
        TestWait::collect<void>(speaking.speak(reply, {}, 0.5, false, stop.get_token()), outcome);
        TestWait::until([] {
            const auto heard = server().recorded();
            return std::ranges::any_of(heard, [](std::int16_t sample) { return std::abs(sample) > 300; });
        });
        tell(state, milliseconds(since), "ms");
        stop.request_stop();
        TestWait::until([&] { return outcome->done; });
        work.end();
    }
}
BENCHMARK(speakingStarts)->Name("speaking_of_20000_characters_starts")->Iterations(1);

qsizetype openMicrophones()
{
    return server().control({u"list"_s, u"short"_s, u"source-outputs"_s}).count(u'\n');
}

// What was used stays at hand, and costs nothing: no open device, and no thread that wakes up.
void idle(benchmark::State &state)
{
    const qsizetype open = openMicrophones();
    Talking talking;
    talking.press();
    talking.speak(server());
    TestWait::await(talking.service->stopRecording());
    TestWait::settle();
    for (auto _ : state) {
        QElapsedTimer since;
        since.start();
        const double before = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
        bool isOver = false;
        QTimer::singleShot(2000, [&] { isOver = true; });
        while (!isOver)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
        tell(state, (processorSeconds(CLOCK_PROCESS_CPUTIME_ID) - before) * 1e5 / milliseconds(since), "%");
    }
    if (openMicrophones() != open)
        state.SkipWithError("a microphone is still open");
}
BENCHMARK(idle)->Name("processor_when_nobody_speaks")->Iterations(1);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"*=false"_s);
    benchmark::Initialize(&argc, argv);
    if (!SoundServer::isThere())
        return 0;
    server(); // before Qt looks for one
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
