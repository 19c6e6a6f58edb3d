// From a picture of known text to what is told of it, by the process that reads.

#include "async/CancelledError.h"
#include "async/SharedResult.h"
#include "async/Work.h"
#include "services/ScreenCapturing.h"
#include "services/ScreenGlanceError.h"
#include "services/ScreenGlanceService.h"
#include "services/ScreenLanguages.h"
#include "services/ScreenTextRecognizer.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/SamplePage.h"
#include "support/WipeSpy.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Picture = std::shared_ptr<const ScreenPicture>;
using Case = ScreenGlanceError::Case;
using Reason = ScreenCaptureFailure::Reason;

namespace {

const QString reader = QStringLiteral(MORVANE_READ_SCREEN);

Picture pictureOf(const QImage &image)
{
    const QImage pixels = image.convertToFormat(QImage::Format_RGB32);
    return std::make_shared<const ScreenPicture>(
        ScreenPicture{.bytes = SecretBytes(QByteArrayView(pixels.constBits(), pixels.sizeInBytes())),
                      .size = pixels.size()});
}

double childSeconds()
{
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

class ScreenTextTest : public testing::Test {
protected:
    [[nodiscard]] QString read(const Picture &picture, const QString &program = reader,
                               std::stop_token stop = {})
    {
        const QStringList languages{u"xxx"_s, u"eng"_s}; // the first isn't installed
        ScreenTextRecognizer recognizer(work, clock, program, languages);
        return ScreenText::of(TestWait::await(recognizer.recognize(picture, std::move(stop))));
    }
    // A program that says what it likes.
    [[nodiscard]] QString impostor(const QByteArray &script) const
    {
        QFile file(folder.filePath(u"reader"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("#!/bin/sh\n" + script + "\n");
        file.setPermissions(QFile::Permissions(0x7700));
        return file.fileName();
    }

    QTemporaryDir folder;
    ManualClock clock;
    Work work{clock};
};

TEST_F(ScreenTextTest, APageIsReadInEveryColourAndSizeWithinItsTime)
{
    struct Row {
        const char *name;
        int pixels;
        QColor ink;
        QColor paper;
        int count;
    };
    const Row rows[] = {{"light", 13, Qt::black, Qt::white, 600},
                        {"dark", 13, {220, 220, 220}, {30, 30, 30}, 600},
                        {"low contrast", 15, {0x83, 0x94, 0x96}, {0x00, 0x2b, 0x36}, 200},
                        {"as bright as its paper", 16, {0, 70, 220}, {200, 0, 0}, 200},
                        {"large", 34, Qt::white, {0, 120, 215}, 150}};
    for (const Row &row : rows) {
        QImage screen(1920, 1080, QImage::Format_RGB32);
        QPainter painter(&screen);
        const QStringList words =
            SamplePage::paint(painter, screen.rect(), row.pixels, row.ink, row.paper, row.count);
        painter.end();
        const double before = childSeconds();
        const double share = SamplePage::shareRead(words, read(pictureOf(screen)));
        const double seconds = childSeconds() - before;
        std::printf("%s, %d px: %.2f %% of %d words, %.2f s of one core\n", row.name, row.pixels, 100 * share,
                    int(words.size()), seconds);
        EXPECT_GE(share, 0.98) << row.name;
#if !defined(__SANITIZE_ADDRESS__)
        EXPECT_LT(seconds, 9) << row.name
                              << ": it takes 1 to 2.2 on a core of its own, which a test seldom has";
#endif
    }
}

// Light and dark windows side by side on a picture, as a file with another display beside it.
TEST_F(ScreenTextTest, WindowsOfAllColoursAreReadTogetherAndAnotherDisplayIsLeftOut)
{
    QImage screens(1920, 600, QImage::Format_RGB32);
    QPainter painter(&screens);
    QLinearGradient desk(0, 0, 1280, 600);
    desk.setColorAt(0, QColor(40, 60, 120));
    desk.setColorAt(1, QColor(140, 40, 90));
    painter.fillRect(screens.rect(), desk);
    QStringList words;
    words += SamplePage::paint(painter, {20, 20, 600, 240}, 13, Qt::black, Qt::white, 80);
    words += SamplePage::paint(painter, {660, 40, 560, 240}, 13, {212, 212, 212}, {30, 30, 30}, 80);
    words += SamplePage::paint(painter, {40, 300, 500, 240}, 14, {20, 40, 160}, {255, 240, 120}, 60);
    words += SamplePage::paint(painter, {600, 320, 200, 60}, 13, Qt::white, {190, 30, 45}, 8);
    SamplePage::paint(painter, {1300, 20, 600, 500}, 20, Qt::black, Qt::white, 60);
    painter.end();
    QBuffer file;
    screens.save(&file, "PNG");
    const auto picture = std::make_shared<const ScreenPicture>(ScreenPicture{
        .form = ScreenPicture::Form::file, .bytes = SecretBytes(file.data()), .part = {0, 0, 2.0 / 3, 1}});
    const QString text = read(picture);
    EXPECT_GE(SamplePage::shareRead(words, text), 0.98) << text.toStdString();
    EXPECT_LT(text.simplified().split(u' ').size(), words.size() + 6) << "no more than was there";

    const auto broken = std::make_shared<const ScreenPicture>(ScreenPicture{
        .form = ScreenPicture::Form::file, .bytes = SecretBytes(file.data().first(2000).append("junk"))});
    EXPECT_THROW(std::ignore = read(broken), std::runtime_error);
}

TEST_F(ScreenTextTest, LinesAreInTheOrderOfReading)
{
    const auto at = [](const QString &text, double x, double middle) {
        return TextObservation{text, {x, middle - 0.01, 0.1, 0.02}};
    };
    EXPECT_EQ(ScreenText::of({at(u"d"_s, 0.1, 0.2), at(u"c"_s, 0.7, 0.511), at(u"b"_s, 0.5, 0.5),
                              at(u"a"_s, 0.9, 0.9), at(u"e"_s, 0.0, 0.187)}),
              u"a\nb\nc\nd\ne"_s);
    EXPECT_EQ(ScreenText::of({at(u" "_s, 0, 0.1)}), QString());
    const TextObservation odd = at(u"ünï\n😀"_s, 0.25, 0.5);
    EXPECT_EQ(TextObservation::decoded(odd.encoded())->text, odd.text);
    EXPECT_NEAR(TextObservation::decoded(odd.encoded())->boundingBox.center().y(), 0.5, 1e-6);
    EXPECT_EQ(TextObservation::decoded(odd.encoded().first(15)), std::nullopt);
    EXPECT_EQ(TextObservation::decoded(QByteArray(16, '\xFF')), std::nullopt);
    EXPECT_EQ(TextObservation::decoded(QByteArray(16, '\0') + "\xFF"), std::nullopt);
    for (const auto &[spoken, codes] : {std::pair(u"de-CH,en"_s, u"deu+eng"_s),
                                        {u"en-GB,fr"_s, u"fra+eng"_s},
                                        {u"zh-Hant-TW"_s, u"chi_tra+eng"_s},
                                        {u"nb"_s, u"nor+eng"_s},
                                        {u"C"_s, u"eng"_s}})
        EXPECT_EQ(ScreenLanguages::codesFor(spoken.split(u',')).join(u'+'), codes);
}

TEST_F(ScreenTextTest, AReaderThatMisbehavesIsAnErrorAndOneThatHangsIsEnded)
{
    QImage small(40, 40, QImage::Format_RGB32);
    small.fill(Qt::white);
    const Picture picture = pictureOf(small);
    EXPECT_EQ(read(picture), QString());
    for (const char *script :
         {"exit 0", "exit 3", "kill -9 $$", "printf 'd\\0\\0\\0\\0'; exit 1", "yes",
          "printf 'd\\0\\0\\0\\0d\\0\\0\\0\\0'", "printf 't\\2\\0\\0\\0hid\\0\\0\\0\\0'",
          "printf 'l\\2\\0\\0\\0hid\\0\\0\\0\\0'", "printf 'f\\1\\0\\0\\0ud\\0\\0\\0\\0'"})
        EXPECT_THROW(std::ignore = read(picture, impostor(script)), std::runtime_error) << script;
    EXPECT_THROW(std::ignore = read(picture, u"/nonexistent"_s), std::runtime_error);

    QTimer looks; // at what tells nobody that it changed
    looks.start(10);
    const QString mark = folder.filePath(u"runs"_s);
    const QString hanging = impostor("echo $$ > '" + mark.toUtf8() + "'; exec sleep 1000");
    for (const bool byTime : {false, true}) {
        QFile::remove(mark);
        ScreenTextRecognizer recognizer(work, clock, hanging, {u"eng"_s});
        std::stop_source stop;
        auto outcome = TestWait::begin(recognizer.recognize(picture, stop.get_token()));
        TestWait::until([&] { return QFileInfo(mark).size() > 0; });
        if (byTime)
            clock.advance(ScreenTextRecognizer::longestRun);
        else
            stop.request_stop();
        TestWait::until([&] { return outcome->done; });
        if (byTime)
            EXPECT_THROW(std::rethrow_exception(outcome->error), std::runtime_error);
        else
            EXPECT_THROW(std::rethrow_exception(outcome->error), CancelledError);
        QFile process(mark);
        ASSERT_TRUE(process.open(QIODevice::ReadOnly));
        const int id = process.readAll().trimmed().toInt();
        TestWait::until([&] { return ::kill(id, 0) != 0; });
    }
}

TEST_F(ScreenTextTest, TheReaderCanWriteNoFileAndThePictureIsWiped)
{
    QImage screen(400, 100, QImage::Format_RGB32);
    QPainter painter(&screen);
    SamplePage::paint(painter, screen.rect(), 15, Qt::black, Qt::white, 12);
    painter.end();
    // A pattern that pixels of the picture spell.
    auto bytes = QByteArray(reinterpret_cast<const char *>(screen.constBits()), screen.sizeInBytes());
    bytes.replace(0, 16, "SCREENSCREENSCRE");
    auto picture = std::make_shared<const ScreenPicture>(
        ScreenPicture{.bytes = SecretBytes(bytes), .size = screen.size()});
    WipeSpy spy(u"SCREENSCREENSCRE"_s);
    ScreenTextRecognizer recognizer(work, clock, reader, {u"eng"_s});
    TestWait::await(recognizer.recognize(std::move(picture), {}));
    EXPECT_EQ(spy.takeCount(), 2) << "ours and the one that was handed over";
}

// A desktop that does what a test says.
class FakeScreen final : public ScreenCapturing {
public:
    [[nodiscard]] bool hasAccess() const override { return access; }
    void requestAccess() override { ++requests; }
    [[nodiscard]] bool isHiddenByFullScreen() const override { return fullScreen; }
    [[nodiscard]] QCoro::Task<Picture> capture(std::stop_token stop) override
    {
        ++captures;
        if (isSlow) {
            const auto here = answer;
            co_await here.wait(stop);
        }
        if (failure)
            throw ScreenCaptureFailure(*failure, "no picture of a SECRET");
        co_return Picture();
    }

    bool access = true;
    bool fullScreen = false;
    bool isSlow = false;
    std::optional<Reason> failure;
    SharedResult<bool> answer;
    int requests = 0;
    int captures = 0;
};

class FakeRecognizer final : public TextRecognizing {
public:
    [[nodiscard]] QCoro::Task<std::vector<TextObservation>> recognize(Picture, std::stop_token) override
    {
        if (fails)
            throw std::runtime_error("it broke off");
        std::vector<TextObservation> found{{text, {0, 0, 1, 1}}};
        co_return found;
    }
    QString text = u" words \n"_s;
    bool fails = false;
};

TEST(ScreenGlanceServiceTest, EveryFailureHasItsCaseAndLeavesTheNextLookFree)
{
    LogCapture log;
    FakeScreen screen;
    FakeRecognizer recognizer;
    ScreenGlanceService service(screen, recognizer);
    const auto outcome = [&]() -> std::optional<Case> {
        try {
            EXPECT_EQ(TestWait::await(service.captureText({})), u"words"_s);
            return std::nullopt;
        } catch (const ScreenGlanceError &error) {
            return error.reason();
        }
    };
    EXPECT_EQ(outcome(), std::nullopt);
    screen.fullScreen = true;
    EXPECT_EQ(outcome(), Case::hiddenByFullScreen);
    EXPECT_EQ(screen.captures, 1);
    screen.fullScreen = false;
    recognizer.text = u" \n"_s;
    EXPECT_EQ(outcome(), Case::noTextFound);
    recognizer.fails = true;
    EXPECT_EQ(outcome(), Case::captureFailed);
    recognizer = {};
    for (const auto &[reason, expected] : {std::pair(Reason::failed, Case::captureFailed),
                                           {Reason::absent, Case::noneHere},
                                           {Reason::refused, Case::permissionNeeded},
                                           {Reason::blind, Case::needsRelaunch}}) {
        EXPECT_FALSE(service.knownBlindThisLaunch());
        screen.failure = reason;
        EXPECT_EQ(outcome(), expected);
    }
    screen.failure.reset();
    EXPECT_EQ(outcome(), std::nullopt) << "the desktop lets it see after all";
    EXPECT_TRUE(service.knownBlindThisLaunch());

    FakeScreen locked;
    locked.access = false;
    ScreenGlanceService asking(locked, recognizer);
    EXPECT_THROW(TestWait::await(asking.captureText({})), ScreenGlanceError);
    try {
        TestWait::await(asking.captureText({}));
    } catch (const ScreenGlanceError &error) {
        EXPECT_EQ(error.reason(), Case::needsRelaunch);
    }
    EXPECT_EQ(locked.requests, 1) << "the second call raises nothing";
    EXPECT_EQ(locked.captures, 0);
    EXPECT_TRUE(
        log.lines().contains(u"windowing: Screen capture failed after a passing preflight: <private>"_s))
        << log.lines().join(u'\n').toStdString();
}

TEST(ScreenGlanceServiceTest, OneLookAtATimeAndOneThatIsStoppedOrLosesItsServiceEndsQuietly)
{
    FakeScreen screen;
    FakeRecognizer recognizer;
    screen.isSlow = true;
    auto service = std::make_unique<ScreenGlanceService>(screen, recognizer);
    std::stop_source stop;
    const auto first = TestWait::begin(service->captureText(stop.get_token()));
    EXPECT_TRUE(service->isCapturing());
    EXPECT_THROW(TestWait::await(service->captureText({})), ScreenGlanceError);
    stop.request_stop();
    TestWait::until([&] { return first->done; });
    EXPECT_THROW(std::rethrow_exception(first->error), CancelledError);
    EXPECT_FALSE(service->isCapturing());

    const auto second = TestWait::begin(service->captureText({}));
    service.reset();
    screen.answer.resolve(true);
    TestWait::until([&] { return second->done; });
    EXPECT_THROW(std::rethrow_exception(second->error), CancelledError);
}

} // namespace

} // namespace morvane
