#include "network/HttpSession.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::optional<QByteArray> HttpResponse::header(QByteArrayView name) const
{
    for (const HttpHeader &candidate : headers) {
        if (candidate.name.compare(name, Qt::CaseInsensitive) == 0)
            return candidate.value;
    }
    return std::nullopt;
}

QCoro::Task<QByteArray> readBody(HttpResponse response, qsizetype limit, std::stop_token stop)
{
    // A local, so that a failed read ends the request before the caller hears of it.
    AsyncStream<QByteArray> pieces = std::move(response.body);
    QByteArray body;
    while (const auto piece = co_await pieces.next(stop)) {
        if (piece->size() > limit - body.size())
            throw TransportError(TransportError::Code::ResponseTooLarge,
                                 u"The response is larger than %1 bytes."_s.arg(limit));
        body.append(*piece);
    }
    co_return body;
}

QCoro::Task<> discardBody(HttpResponse response, std::stop_token stop)
{
    constexpr qsizetype nearEnough = qsizetype{64} * 1024;
    try {
        co_await readBody(std::move(response), nearEnough, stop);
    } catch (const TransportError &) {
        // Nobody wants it.
    }
}

} // namespace morvane
