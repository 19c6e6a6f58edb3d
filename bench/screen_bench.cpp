// A page of text on a screen of 1920 by 1080, from its pixels to the words, by the process that reads: in
// processor time, since other work on the machine doesn't count. And how long the GUI thread is held up.

#include "LongestBlock.h"
#include "async/Work.h"
#include "services/ScreenTextRecognizer.h"
#include "support/Await.h"
#include "support/SamplePage.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <sys/resource.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int wordsOfPage = 600;
constexpr double leastShare = 0.98; // of the words, that are read right

double childMilliseconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    double milliseconds = 0;
    for (const timeval &time : {usage.ru_utime, usage.ru_stime})
        milliseconds += static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    return milliseconds;
}

void readPage(benchmark::State &state, const QColor &ink, const QColor &paper, bool tellsBlock)
{
    QImage screen(1920, 1080, QImage::Format_RGB32);
    QPainter painter(&screen);
    const QStringList words = SamplePage::paint(painter, screen.rect(), 13, ink, paper, wordsOfPage);
    painter.end();
    const auto picture = std::make_shared<const ScreenPicture>(
        ScreenPicture{.bytes = SecretBytes(QByteArrayView(screen.constBits(), screen.sizeInBytes())),
                      .size = screen.size()});
    SystemClock clock;
    Work work(clock);
    ScreenTextRecognizer recognizer(work, clock, QStringLiteral(MORVANE_READ_SCREEN), {u"eng"_s});
    LongestBlock block;
    const double before = childMilliseconds();
    for (auto _ : state) {
        const QString text = ScreenText::of(TestWait::await(recognizer.recognize(picture, {})));
        if (SamplePage::shareRead(words, text) < leastShare)
            throw std::runtime_error("what is measured doesn't work");
    }
    const double spent = childMilliseconds() - before;
    block.end();
    state.counters["value"] = tellsBlock ? block.milliseconds() : spent;
    state.SetLabel("ms");
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QColor light(20, 20, 20);
    const QColor dark(220, 220, 220);
    const auto add = [](const char *name, const QColor &ink, const QColor &paper, bool tellsBlock) {
        benchmark::RegisterBenchmark(name, [=](benchmark::State &state) {
            readPage(state, ink, paper, tellsBlock);
        })->Iterations(1);
    };
    add("screen_page_light", light, Qt::white, false);
    add("screen_page_dark", dark, QColor(30, 30, 30), false);
    add("longest_block_while_reading_the_screen", light, Qt::white, true);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
