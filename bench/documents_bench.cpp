// What is read out of documents and pictures by the process that does, from the file to the attachment: a PDF
// beside another reader of the same file, a photograph beside the bare calls that it takes. And how long the
// GUI thread is held up while both run.

#include "LongestBlock.h"
#include "async/Work.h"
#include "documents/DocumentImportService.h"
#include "documents/ExtractionServices.h"
#include "support/Await.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <stdexcept>
#include <sys/resource.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int pages = 1000;
constexpr int linesOfPage = 45;
constexpr qsizetype limit = 100'000'000; // characters: nothing is cut

// About 3,000 characters to a page.
void writeManual(const QString &path)
{
    QPdfWriter writer(path);
    QPainter painter(&writer);
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            writer.newPage();
        for (int line = 0; line < linesOfPage; ++line)
            painter.drawText(
                200, 300 * (line + 1),
                u"Line %1 of page %2 says that nothing said before it is to be relied upon."_s.arg(
                    QString::number(line), QString::number(page)));
    }
}

// Twelve megapixels, with slow colours and the noise of a sensor.
QByteArray photograph()
{
    QImage image(4000, 3000, QImage::Format_RGB32);
    std::minstd_rand random(1);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const auto noise = static_cast<int>(random() % 16);
            const auto wave = static_cast<int>(100 * std::sin(x * 0.01) * std::cos(y * 0.013));
            image.setPixel(x, y, qRgb(128 + wave + noise, (x + y) / 32 + noise, 128 - wave + noise));
        }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::WriteOnly);
    image.save(&buffer, "jpeg", 90);
    return bytes;
}

class Bench {
public:
    Bench()
        : manual(folder.filePath(u"manual.pdf"_s))
        , photo(photograph())
    {
        writeManual(manual);
    }

    [[nodiscard]] QCoro::Task<ImportedAttachment> importManual()
    {
        return service.importDocument(QUrl::fromLocalFile(manual), limit, [](int, int) {}, {});
    }
    [[nodiscard]] QCoro::Task<ImportedAttachment> importPhoto()
    {
        return service.importImage(photo, u"photo.jpeg"_s, {});
    }

    QTemporaryDir folder;
    QString manual;
    qsizetype textSize = 0; // bytes of what was last read out of it
    QByteArray photo;

private:
    SystemClock m_clock;
    Work m_work{m_clock};
    ExtractionService m_extraction{m_work, m_clock, QStringLiteral(MORVANE_EXTRACT)};
    TextExtractionService m_texts;
    DocumentImportService service{{m_work, m_extraction, m_texts, m_extraction}};
};

void require(bool holds)
{
    if (!holds)
        throw std::runtime_error("what is measured doesn't work");
}

using Task = void (*)(Bench &);

// Processor time of this process and of those that it started and that ended, in milliseconds: other work on
// the machine doesn't count.
double spent()
{
    double milliseconds = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        for (const timeval &time : {usage.ru_utime, usage.ru_stime})
            milliseconds += static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    }
    return milliseconds;
}

double milliseconds(Task task, Bench &bench)
{
    const double before = spent();
    task(bench);
    return spent() - before;
}

void tellTime(benchmark::State &state, Task task, Bench &bench)
{
    for (auto _ : state)
        state.counters["value"] = milliseconds(task, bench);
    state.SetLabel("ms");
}

// Of the text that comes out.
void tellRate(benchmark::State &state, Task task, Bench &bench)
{
    for (auto _ : state) {
        const double taken = milliseconds(task, bench);
        state.counters["value"] = static_cast<double>(bench.textSize) / 1e3 / taken;
    }
    state.SetLabel("MB/s");
}

void importManual(Bench &bench)
{
    bench.textSize = TestWait::await(bench.importManual()).text.toUtf8().size();
    require(bench.textSize > pages * 2500);
}

void readByOther(Bench &bench)
{
    QProcess other;
    other.start(u"pdftotext"_s, {bench.manual, u"-"_s});
    require(other.waitForFinished(-1));
    bench.textSize = other.readAllStandardOutput().size();
    require(bench.textSize > pages * 2500);
}

void importPhoto(Bench &bench)
{
    require(TestWait::await(bench.importPhoto()).imageData->size() > 1000);
}

void prepareBarely(Bench &bench)
{
    const QImage image = QImage::fromData(bench.photo, "jpeg");
    const QImage small = image.scaled(1536, 1536, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QBuffer buffer;
    buffer.open(QBuffer::WriteOnly);
    require(small.save(&buffer, "jpeg", 80));
}

void importBoth(benchmark::State &state, Bench &bench)
{
    LongestBlock block;
    for (auto _ : state) {
        const auto text = std::make_shared<TestWait::Outcome<ImportedAttachment>>();
        const auto picture = std::make_shared<TestWait::Outcome<ImportedAttachment>>();
        TestWait::collect(bench.importManual(), text);
        TestWait::collect(bench.importPhoto(), picture);
        TestWait::until([&] { return text->done && picture->done; });
        require(!text->error && !picture->error);
    }
    block.end();
    state.counters["value"] = block.milliseconds();
    state.SetLabel("ms");
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "*.info=false");
    const QGuiApplication application(argc, argv);
    Bench bench;
    const auto add = [&bench](const char *name, auto tell, Task task) {
        benchmark::RegisterBenchmark(name, [tell, task, &bench](benchmark::State &state) {
            tell(state, task, bench);
        })->Iterations(1);
    };
    add("pdf_text_of_1000_pages", tellTime, importManual);
    add("pdf_text_of_1000_pages/yardstick", tellTime, readByOther);
    add("pdf_text_rate", tellRate, importManual);
    add("pdf_text_rate/yardstick", tellRate, readByOther);
    add("photo_of_12_megapixels", tellTime, importPhoto);
    add("photo_of_12_megapixels/yardstick", tellTime, prepareBarely);
    benchmark::RegisterBenchmark("longest_block_while_importing", [&bench](benchmark::State &state) {
        importBoth(state, bench);
    })->Iterations(1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
