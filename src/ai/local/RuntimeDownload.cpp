#include "ai/local/RuntimeDownload.h"

#include "ai/local/FileDigest.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/PartFile.h"
#include "ai/local/SetupLog.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "network/HttpSession.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using RuntimeDownload::OnProgress;
using RuntimeDownload::Parts;

namespace {

constexpr qsizetype largestBatch = qsizetype{1} << 20; // bytes that are written at once
constexpr int mostBreaks = 5;                          // in a row, without a byte between them

// What one request came to.
enum class Fetch { whole, broken };

[[noreturn]] void failWith(const QString &reason)
{
    throw LocalSetupError(
        u"The AI runtime couldn't be downloaded: %1 Try again in a little while."_s.arg(reason));
}

bool isLoopback(const QUrl &url)
{
    return url.scheme() == "http"_L1 && (url.host() == "127.0.0.1"_L1 || url.host() == "localhost"_L1);
}

std::function<bool(const QUrl &, const QUrl &)> redirectRule(const LocalRuntimeValues &values)
{
    const bool isTrial = isLoopback(values.releaseOrigin);
    return [isTrial](const QUrl &from, const QUrl &to) {
        return to.scheme() == "https"_L1 || (isTrial && isLoopback(from) && isLoopback(to));
    };
}

HttpRequest requestFrom(qint64 offset, const LocalRuntimeValues &values)
{
    HttpRequest request;
    request.url = values.archiveURL();
    request.headers.push_back({"User-Agent", (Product::name + "/"_L1 + Product::version).toLatin1()});
    if (offset > 0)
        request.headers.push_back({"Range", "bytes=" + QByteArray::number(offset) + '-'});
    request.followsRedirect = redirectRule(values);
    return request;
}

// "bytes 100-199/200"
bool continuesAt(qint64 offset, const HttpResponse &response)
{
    const auto range = response.header("Content-Range");
    return range && range->trimmed().startsWith("bytes " + QByteArray::number(offset) + '-');
}

std::optional<qint64> totalOf(const HttpResponse &response, qint64 offset, const LocalRuntimeValues &values)
{
    if (values.archive->bytes)
        return values.archive->bytes;
    bool isNumber = false;
    const qint64 length = response.header("Content-Length").value_or(QByteArray()).toLongLong(&isNumber);
    return isNumber && length >= 0 ? std::optional(offset + length) : std::nullopt;
}

bool isOfTheMoment(int status)
{
    return status == 408 || status == 429 || status >= 500;
}

// Where the part file is to go on, or why it can't.
qint64 offsetOf(const HttpResponse &response, qint64 offset)
{
    const int status = response.status;
    if (status == 200)
        return 0;
    if (status == 206 && offset > 0 && continuesAt(offset, response))
        return offset;
    if (status >= 300 && status < 400)
        failWith(u"its release page led to an address that isn't encrypted."_s);
    if (status == 206)
        failWith(u"its release page sent another part than was asked for."_s);
    failWith(u"its release page answered with HTTP %1."_s.arg(status));
}

// The body into the file, in batches: a write may wait for the disk.
QCoro::Task<> take(Parts parts, HttpResponse response, qint64 offset, OnProgress onProgress,
                   std::stop_token stop)
{
    const auto total = totalOf(response, offset, parts.values);
    const qint64 limit = parts.values.archive->bytes.value_or(RuntimeDownload::largestArchive);
    AsyncStream<QByteArray> body = std::move(response.body);
    const auto file = std::make_shared<PartFile>(RuntimeDownload::path(parts.values));
    if (offset == 0)
        file->truncate();
    qint64 done = offset;
    onProgress(done, total);
    while (auto piece = co_await body.next(stop)) {
        QByteArray batch = std::move(*piece);
        while (batch.size() < largestBatch) {
            const auto more = body.takeBuffered();
            if (!more)
                break;
            batch += *more;
        }
        const qint64 place = done;
        done += batch.size();
        if (done > limit) // one byte too many is enough for its digest to differ
            batch.chop(done - limit - 1);
        std::function<void()> writing = [file, batch, place] { file->write(batch, place); };
        co_await parts.work->run(std::move(writing), stop);
        if (done > limit)
            co_return;
        onProgress(done, total);
    }
    throwIfStopped(stop);
    std::function<void()> syncing = [file] { file->sync(); };
    co_await parts.work->run(std::move(syncing), stop);
}

bool isWhole(const LocalRuntimeValues &values)
{
    const auto bytes = values.archive->bytes;
    return bytes && PartFile::size(RuntimeDownload::path(values)) >= *bytes;
}

QCoro::Task<Fetch> fetch(Parts parts, OnProgress onProgress, std::stop_token stop)
{
    const LocalRuntimeValues &values = parts.values;
    qint64 offset = PartFile::size(RuntimeDownload::path(values));
    if (isWhole(values))
        co_return Fetch::whole;
    const auto session = parts.network->session(EgressFeature::aiSetup, {});
    HttpRequest request = requestFrom(offset, values);
    auto response = co_await session->send(std::move(request), stop);
    if (response.status == 416 && offset > 0 && !values.archive->bytes)
        co_return Fetch::whole; // there is nothing behind what is there
    if (isOfTheMoment(response.status))
        co_return Fetch::broken;
    offset = offsetOf(response, offset);
    co_await take(parts, std::move(response), offset, std::move(onProgress), stop);
    if (values.archive->bytes)
        co_return isWhole(values) ? Fetch::whole : Fetch::broken;
    co_return Fetch::whole;
}

// The rest won't go better the next time.
bool mayPass(const TransportError &error)
{
    using Code = TransportError::Code;
    static constexpr std::array passing{Code::TimedOut, Code::ConnectionLost, Code::CannotConnect,
                                        Code::HostNotFound, Code::Other};
    return std::find(passing.begin(), passing.end(), error.code()) != passing.end();
}

QCoro::Task<> fetchWhole(Parts parts, OnProgress onProgress, std::stop_token stop)
{
    const QString file = RuntimeDownload::path(parts.values);
    for (int breaks = 0;;) {
        const qint64 before = PartFile::size(file);
        std::optional<TransportError> broken;
        Fetch outcome = Fetch::broken;
        try {
            outcome = co_await fetch(parts, onProgress, stop);
        } catch (const TransportError &error) {
            broken = error;
        }
        throwIfStopped(stop);
        if (outcome == Fetch::whole)
            co_return;
        breaks = PartFile::size(file) > before ? 1 : breaks + 1;
        if ((broken && !mayPass(*broken)) || breaks >= mostBreaks) {
            if (broken)
                throw TransportError(*broken);
            failWith(u"its release page doesn't answer as it should."_s);
        }
        parts.log->write(u"download broke off at %1 bytes; trying again"_s.arg(PartFile::size(file)));
        const std::chrono::milliseconds wait = 1s * (1 << (breaks - 1));
        co_await pause(*parts.clock, wait, stop);
    }
}

[[noreturn]] void refuse(const Parts &parts)
{
    QFile::remove(RuntimeDownload::path(parts.values));
    Log::error(Log::Category::AIProvider, "Downloaded runtime did not match the pinned digest; deleted"_L1);
    parts.log->write(u"runtime digest mismatch for %1; deleted"_s.arg(parts.values.version));
    throw LocalSetupError(u"The AI runtime %1 downloaded was not the version it expected, so it was deleted. "
                          u"Try again in a little while."_s.arg(Product::name));
}

} // namespace

// Of its own for each archive, so that no part of one becomes the start of another.
QString RuntimeDownload::path(const LocalRuntimeValues &values)
{
    return u"%1/%2-%3"_s.arg(values.downloads(), values.archive->sha256.first(16), values.archive->name);
}

QCoro::Task<QString> RuntimeDownload::run(Parts parts, OnProgress onProgress, std::stop_token stop)
{
    try {
        co_await fetchWhole(parts, std::move(onProgress), stop);
    } catch (const FileError &error) {
        if (error.status() != ENOSPC && error.status() != EDQUOT)
            throw;
        throw LocalSetupError(
            u"The disk is full, so the download stopped. Free up some space and press Retry; "
            u"it goes on from where it stopped."_s);
    }
    const QString file = path(parts.values);
    std::function<QString(std::stop_token)> hashing = [file](std::stop_token stopped) {
        return FileDigest::sha256(file, stopped);
    };
    const QString digest = co_await parts.work->run(std::move(hashing), stop);
    if (digest != parts.values.archive->sha256)
        refuse(parts);
    co_return QString(file);
}

} // namespace morvane
