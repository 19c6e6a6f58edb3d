// Reading a page's text, beside the lightest work that a general matcher could do on it: taking out the tags
// in one pass. Each size is also measured beside the smallest, byte for byte: the cost must stay linear.

#include "services/PageText.h"

#include <QRegularExpression>

#include <benchmark/benchmark.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype smallPage = 50'000;
constexpr qsizetype largePage = 5'000'000;

// About one kilobyte of what news sites are made of.
QByteArray section(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "<section class=\"story story--wide\" data-id=\"" + n +
           "\"><h2><a href=\"https://news.example/stories/" + n + "?ref=front\">A headline with a number, " +
           n +
           "</a></h2>\n"
           "<script>window.track = window.track || []; track.push({id: " +
           n +
           ", kind: \"story\", seen: 1 < 2});</script>\n"
           "<p class=\"lead\">The first paragraph says what happened &mdash; and to whom. It is <b>long</b> "
           "enough to look like prose, with an <a href=\"/a/" +
           n +
           "\">inner link</a>, a caf\xc3\xa9 &amp; a quote: &ldquo;Indeed.&rdquo;</p>\n"
           "<!-- advert slot " +
           n + " -->\n<div class=\"figure\"><img src=\"/img/" + n +
           ".jpg\" alt=\"\"><br/>Photo: somebody</div>\n"
           "<ul><li>One thing</li><li>Another thing</li></ul>\n"
           "<p>The second paragraph adds what was said before, by several people who asked not to be named, "
           "and closes with a date.<br>It goes on for one more line of text.</p>\n"
           "<style>.story--" +
           n + " { color: #333; margin: 0 auto }</style></section>\n";
}

QByteArray page(qsizetype size)
{
    QByteArray html = "<!DOCTYPE html><html><head><title>Front page</title></head><body><main>\n";
    for (int i = 0; html.size() < size; ++i)
        html += section(i);
    return html + "</main><footer>Imprint</footer></body></html>";
}

void readPage(benchmark::State &state, qsizetype size)
{
    const QString html = PageText::decoded(page(size));
    for (auto _ : state)
        benchmark::DoNotOptimize(PageText::text(html));
    state.SetBytesProcessed(state.iterations() * size);
}

void removeTags(benchmark::State &state, qsizetype size)
{
    const QRegularExpression tag(u"<[^>]+>"_s);
    const QString html = PageText::decoded(page(size));
    for (auto _ : state) {
        QString text = html;
        text.remove(tag);
        benchmark::DoNotOptimize(text);
    }
}

// As many small pages as make a large one.
void readInSmallPages(benchmark::State &state)
{
    const QString html = PageText::decoded(page(smallPage));
    for (auto _ : state) {
        for (qsizetype done = 0; done < largePage; done += smallPage)
            benchmark::DoNotOptimize(PageText::text(html));
    }
}

} // namespace

int main(int argc, char **argv)
{
    for (const qsizetype size : {smallPage, qsizetype{500'000}, largePage}) {
        const std::string name = "page_text_" + std::to_string(size / 1000) + "_KB";
        benchmark::RegisterBenchmark(name.c_str(), readPage, size)->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/yardstick").c_str(), removeTags, size)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("page_text_growth", readPage, largePage)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("page_text_growth/yardstick", readInSmallPages)
        ->Unit(benchmark::kMicrosecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
