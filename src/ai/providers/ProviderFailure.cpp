#include "ai/providers/ProviderFailure.h"

#include "ai/providers/ServerWords.h"
#include "async/CancelledError.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

namespace {

ProviderError mappedTransport(TransportError::Code code)
{
    switch (code) {
    case TransportError::Code::Cancelled:
        return ProviderError(Plain::cancelled);
    case TransportError::Code::TimedOut:
        return ProviderError(Plain::networkTimeout);
    case TransportError::Code::BadURL:
    case TransportError::Code::UnsupportedURL:
        return ProviderError(ProviderError::InvalidBaseURL{u"the configured URL"_s});
    case TransportError::Code::ResponseTooLarge: // our own limit: the server's answer is beyond all use
        return ProviderError(Plain::replyTooLarge);
    case TransportError::Code::Blocked:
    case TransportError::Code::HostNotFound:
    case TransportError::Code::CannotConnect:
    case TransportError::Code::ConnectionLost:
    case TransportError::Code::InsecureConnection:
    case TransportError::Code::UnreadableResponse:
    case TransportError::Code::TooManyRedirects:
    case TransportError::Code::Other:
        return ProviderError(Plain::networkUnavailable);
    }
    return ProviderError(Plain::networkUnavailable);
}

} // namespace

ProviderError ProviderFailure::mapped(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const CancelledError &) {
        return ProviderError(Plain::cancelled);
    } catch (const ProviderError &known) {
        return known;
    } catch (const TransportError &transport) {
        return mappedTransport(transport.code());
    } catch (...) {
        return ProviderError(Plain::networkUnavailable);
    }
}

ReplyTrial ProviderFailure::trialEndedBy(const std::exception_ptr &error)
{
    const ProviderError failure = mapped(error);
    if (!failure.is(Plain::limitSpentThinking))
        throw ProviderError(failure);
    return {.cameInPieces = true};
}

QCoro::Task<HttpResponse> ProviderFailure::validated(HttpResponse response, std::stop_token stop)
{
    const int status = response.status;
    if (isSuccess(status))
        co_return std::move(response);
    const QByteArray body = co_await readStart(std::move(response), errorBodyLimit, stop);
    const QString words = ServerWords::of(body);
    if (words.isEmpty())
        Log::error(Log::Category::AIProvider, "Provider HTTP error %ld"_L1, {status});
    else
        Log::error(Log::Category::AIProvider, "Provider HTTP error %ld: %s"_L1, {status, words});
    throw ServerWords::error(status, words);
}

QCoro::Task<QByteArray> ProviderFailure::readStart(HttpResponse response, qsizetype limit,
                                                   std::stop_token stop)
{
    QByteArray body;
    try {
        while (const auto piece = co_await response.body.next(stop)) {
            body.append(QByteArrayView(*piece).first(std::min(piece->size(), limit - body.size())));
            if (body.size() == limit)
                break;
        }
    } catch (const TransportError &) {
    }
    co_return body;
}

} // namespace morvane
