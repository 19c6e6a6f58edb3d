// The person's own speech model, against a process that speaks the documented interface of whisper-server
// over real sockets. The program itself is not packaged here, so its words are not tested.

#include "ai/speech/WhisperRecognizer.h"
#include "ai/speech/WhisperSetup.h"
#include "ai/speech/WhisperUpload.h"
#include "async/Work.h"
#include "audio/AudioError.h"
#include "audio/SpeechEngines.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/LinuxMachine.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/WipeSpy.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr quint32 english = 51'864;
constexpr quint32 manyLanguages = 51'865;

class WhisperRecognizerTest : public testing::Test {
protected:
    WhisperRecognizerTest()
    {
        QDir(folder.path()).mkdir(u"bin"_s);
        QFile::link(QStringLiteral(MORVANE_SCRIPTED_WHISPER_SERVER),
                    folder.filePath(u"bin/whisper-server"_s));
        qputenv("PATH", folder.filePath(u"bin"_s).toLocal8Bit());
        QObject::connect(&setup, &WhisperSetup::changed, [this] { ++changes; });
        setup.refresh();
    }
    ~WhisperRecognizerTest() override
    {
        task.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
    }
    // The fake clock runs along while the server does what it does in real time.
    void until(const std::function<bool()> &done)
    {
        QTimer heart;
        QObject::connect(&heart, &QTimer::timeout, [this] { clock.advance(20ms); });
        heart.start(4);
        TestWait::until(done);
    }
    void put(const QString &name, const QByteArray &bytes = {}) const
    {
        PrivateFile::write(folder.filePath(name), bytes);
    }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        return PrivateFile::read(folder.filePath(name), 1 << 20).value_or(QByteArray());
    }
    [[nodiscard]] static QByteArray model(quint32 tokens)
    {
        QByteArray head(48, '\0');
        qToLittleEndian<quint32>(0x67676d6c, head.data());
        qToLittleEndian<quint32>(tokens, head.data() + 4);
        return head;
    }
    void choose(const QByteArray &bytes)
    {
        put(u"model.bin"_s, bytes);
        const int before = changes;
        settings.setSpeechModelPath(folder.filePath(u"model.bin"_s));
        setup.refresh();
        TestWait::until([&] { return changes > before; });
    }
    void press(QLocale::Language language = QLocale::German)
    {
        heard.clear();
        failure = nullptr;
        isFinal = false;
        request = std::make_shared<SpeechRecognitionRequest>();
        request->locale = QLocale(language);
        task = engines.recognitionTask(
            request, {.result =
                          [this](const QString &text, bool final) {
                              heard.append(text);
                              isFinal = final;
                          },
                      .error = [this](const std::exception_ptr &error) { failure = error; }});
    }
    void say(double seconds, std::int16_t loudness = 9000) const
    {
        std::vector<std::int16_t> sound(static_cast<std::size_t>(seconds * AudioQueue::sampleRate), loudness);
        request->audio.offer(sound);
    }
    void end()
    {
        request->audio.finish();
        until([this] { return isFinal || failure; });
    }
    // The server of that number, or what it started.
    [[nodiscard]] bool runs(qsizetype which, qsizetype started = 0) const
    {
        const QByteArrayList ids = read(u"pids"_s).split('\n');
        return which < ids.size() - 1 &&
               QFile::exists(u"/proc/"_s + QString::fromLatin1(ids[which].split(' ').at(started)));
    }

    QTemporaryDir folder;
    ManualClock clock;
    Work work{clock};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    LinuxMachine machine;
    int changes = 0;
    WhisperSetup setup{settings, work};
    std::optional<WhisperServer> server{std::in_place,
                                        WhisperServer::Parts{.network = network,
                                                             .machine = machine,
                                                             .clock = clock,
                                                             .work = work,
                                                             .guard = QStringLiteral(MORVANE_RUNTIME_GUARD)}};
    WhisperRecognizer recognizer{setup, *server, clock};
    SpeechEngines engines{{&recognizer}};
    std::shared_ptr<SpeechRecognitionRequest> request;
    std::unique_ptr<SpeechRecognizing::Task> task;
    QStringList heard;
    std::exception_ptr failure;
    bool isFinal = false;
};

TEST_F(WhisperRecognizerTest, ItIsThereWithAProgramAndAModelForTheLanguagesOfThat)
{
    TestWait::until([this] { return changes > 0; });
    EXPECT_FALSE(setup.found().program.isEmpty());
    const auto languages = [this](const QByteArray &bytes) {
        choose(bytes);
        QString known = engines.isAvailable() ? u"there:"_s : u"not there"_s;
        for (const auto language : {QLocale::C, QLocale::German, QLocale::Esperanto}) {
            if (engines.supportsOnDeviceRecognition(QLocale(language)))
                known += u' ' + QLocale::languageToString(language);
        }
        return known;
    };
    EXPECT_EQ(languages(model(english)), u"there: C"_s);
    EXPECT_EQ(languages(model(manyLanguages)), u"there: C German"_s);
    for (const QByteArray &other :
         {model(english).chopped(1), QByteArray(100, 'x'), model(0xffffffff) + "more"}) {
        EXPECT_EQ(languages(other), u"not there"_s);
        choose(model(english));
    }
    EXPECT_FALSE(WhisperModel::read(folder.path()) || WhisperModel::read(u"/dev/zero"_s));
}

TEST_F(WhisperRecognizerTest, SpeechIsHeardAsItComesAndCutWhereItIsQuiet)
{
    const LogCapture log;
    choose(model(manyLanguages));
    put(u"loading"_s);
    press();
    say(3);
    until([this] { return !heard.isEmpty(); });
    EXPECT_EQ(heard, QStringList{u"3.0 seconds of de"_s});
    say(13); // the pause lies in the second half of what is worked on
    say(1, 0);
    say(10);
    end();
    EXPECT_EQ(heard.last(), u"16.1 seconds of de 10.9 seconds of de"_s);
    say(1);
    TestWait::settle();
    EXPECT_EQ(read(u"asked"_s).split('\n').first(), R"([[1, 2, 16000], 96000, "json"])");
    int carried = 0;
    for (const auto &row : ledger.snapshot().entries) {
        EXPECT_EQ(row.host, u"127.0.0.1"_s);
        EXPECT_EQ(row.feature, EgressFeature::speech);
        carried += row.carrying == SensitiveData::voice ? 1 : 0;
    }
    EXPECT_EQ(carried, read(u"asked"_s).count('\n'));
    EXPECT_FALSE(log.lines().join(u'\n').contains(u"seconds"_s));

    press(QLocale::English); // the same server; silence is not asked
    const qsizetype before = read(u"asked"_s).count('\n');
    say(4, 3);
    end();
    EXPECT_EQ(heard.last(), QString());
    EXPECT_EQ(read(u"asked"_s).count('\n'), before);
    EXPECT_TRUE(runs(0));
    clock.advance(5min);
    until([this] { return !runs(0); }); // nobody speaks any more
    press();
    until([this] { return runs(1); });
    EXPECT_TRUE(runs(1, 1)) << "what it started in a session of its own";
    server.reset(); // the quit
    EXPECT_FALSE(runs(1) || runs(1, 1));
}

TEST_F(WhisperRecognizerTest, AServerThatDiesOrHangsIsReplacedAndWhatWasHeardStays)
{
    choose(model(english));
    for (const QString &what : {u"dies"_s, u"hangs"_s}) {
        press(QLocale::English);
        put(what);
        say(3);
        until([&] { return !QFile::exists(folder.filePath(what)); });
        if (what == u"hangs"_s)
            clock.advance(20s);
        end();
        EXPECT_EQ(heard.last(), u"3.0 seconds of en"_s) << what.toStdString();
    }
    const qsizetype servers = read(u"pids"_s).count('\n');
    EXPECT_EQ(servers, 3);
    press(QLocale::English);
    put(u"hangs"_s);
    say(3);
    until([&] { return !QFile::exists(folder.filePath(u"hangs"_s)); });
    task.reset(); // the person has waited long enough
    press(QLocale::English);
    say(1);
    end();
    EXPECT_EQ(heard.last(), u"1.0 seconds of en"_s);
    EXPECT_TRUE(runs(servers));
    until([&] { return !runs(servers - 1); });

    press(QLocale::English);
    say(3);
    until([this] { return !heard.isEmpty(); });
    put(u"deaf"_s);
    say(3);
    until([this] { return failure != nullptr; });
    EXPECT_EQ(heard, QStringList{u"3.0 seconds of en"_s});
    EXPECT_THROW(std::rethrow_exception(failure), AudioError);
}

TEST_F(WhisperRecognizerTest, NoSoundGoesToAServerThatOthersReach)
{
    const LogCapture log;
    choose(model(english));
    for (const QString &what : {u"open"_s, u"broken"_s}) {
        put(what);
        press(QLocale::English);
        say(3);
        end();
        EXPECT_TRUE(failure && heard.isEmpty()) << what.toStdString();
        QFile::remove(folder.filePath(what));
    }
    EXPECT_TRUE(log.lines().contains(u"audio: The speech server listens beyond this machine; stopped"_s));
    EXPECT_TRUE(read(u"asked"_s).isEmpty());
    until([this] { return !runs(0) && !runs(1); });
}

TEST(WhisperUploadTest, AnswersAreTakenAtTheirWordsAndFormsAreWiped)
{
    struct {
        const char *answer;
        std::optional<QString> words;
    } const cases[] = {
        {R"({"text":" Hello,\n world. \n"})", u"Hello, world."_s},
        {R"({"text":"[BLANK_AUDIO]"})", QString()},
        {R"x({"text":"♪ (music)"})x", QString()},
        {R"({"error":"failed to process audio"})", std::nullopt},
        {R"({"text":5})", std::nullopt},
        {"<html>", std::nullopt},
    };
    for (const auto &each : cases)
        EXPECT_EQ(WhisperUpload::wordsOf(each.answer), each.words) << each.answer;
    const QString sound = u"what was said"_s;
    WipeSpy spy(sound);
    QByteArray form = WhisperUpload::formOf(
        {reinterpret_cast<const std::int16_t *>(sound.utf16()), static_cast<std::size_t>(sound.size())},
        u"en"_s);
    const QByteArray sent =
        form; // NOLINT(performance-unnecessary-copy-initialization): as the network has it
    WhisperUpload::wipe(form);
    EXPECT_EQ(spy.takeCount(), 1);
    EXPECT_EQ(sent.count('\0'), sent.size());
}

} // namespace

} // namespace morvane
