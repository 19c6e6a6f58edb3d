#include "documents/ExtractionServices.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "documents/DocumentError.h"
#include "documents/DocumentText.h"
#include "documents/RichText.h"

#include <variant>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;
using ExtractionProcess::Reply;

namespace {

using News = std::variant<ExtractionFrames::Progress, Reply>;

} // namespace

QString TextExtractionService::extractText(QByteArrayView bytes, const QString &extension) const
{
    if (extension != "rtf"_L1)
        return DocumentText::decoded(bytes);
    std::optional<QString> text = RichText::text(bytes);
    if (!text)
        throw DocumentError(Plain::extractionFailed);
    return *std::move(text);
}

ExtractionService::ExtractionService(Work &work, Clock &clock, QString program)
    : m_work(work)
    , m_clock(clock)
    , m_program(std::move(program))
{}

QCoro::Task<QString> ExtractionService::extractText(QByteArray pdf, qsizetype limit, ImportProgress progress,
                                                    std::stop_token stop)
{
    const ExtractionProcess::Request request{m_program, {u"pdf"_s, QString::number(limit)}, pdf};
    Reply reply = co_await run(request, progress, stop);
    QString text = std::move(reply.text);
    co_return text;
}

QCoro::Task<PreparedPicture> ExtractionService::prepareImage(QByteArray data, std::stop_token stop)
{
    if (data.size() > ExtractionFrames::longestInput)
        throw DocumentError(Plain::unreadableImage);
    const ExtractionProcess::Request request{m_program, {u"image"_s}, data};
    const ImportProgress none = [](int, int) {};
    Reply reply = co_await run(request, none, stop);
    PreparedPicture picture = std::move(reply.picture);
    if (picture.jpeg.isEmpty() || picture.thumbnail.isEmpty())
        throw DocumentError(Plain::extractionFailed);
    co_return picture;
}

QCoro::Task<Reply> ExtractionService::run(ExtractionProcess::Request request, ImportProgress progress,
                                          std::stop_token stop)
{
    const std::function<void(const Work::Report<News> &, const std::stop_token &)> work =
        [request](const Work::Report<News> &report, const std::stop_token &stopped) {
            const auto onProgress = [&report](ExtractionFrames::Progress pages) { report(pages); };
            report(ExtractionProcess::run(request, onProgress, stopped));
        };
    Work::Results<News> results = m_work.start<News>(work);
    std::stop_source ending; // by the caller or by the time
    const std::stop_callback forwarded(stop, [ending]() mutable { ending.request_stop(); });
    const auto alarm = m_clock.after(longestRun, [ending]() mutable { ending.request_stop(); });
    try {
        while (std::optional<News> news = co_await results.next(ending.get_token())) {
            if (auto *last = std::get_if<Reply>(&*news)) {
                Reply reply = std::move(*last);
                co_return reply;
            }
            const auto pages = std::get<ExtractionFrames::Progress>(*news);
            progress(static_cast<int>(pages.done), static_cast<int>(pages.total));
        }
    } catch (const CancelledError &) {
        const bool isTimeUp = ending.stop_requested() && !stop.stop_requested();
        if (!isTimeUp)
            throw;
    }
    throw DocumentError(Plain::extractionFailed);
}

} // namespace morvane
