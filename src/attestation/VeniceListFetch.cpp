#include "attestation/VeniceListFetch.h"

#include "attestation/VeniceEndpoint.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Failure = VeniceListFetch::Failure;

constexpr auto longestRead = 20s;

// Pieces may drip in without a pause that is long enough to be a silence, so the time of the whole counts as
// well.
QCoro::Task<QByteArray> readWithin(Clock &clock, AsyncStream<QByteArray> pieces, std::stop_token stop)
{
    const std::chrono::milliseconds start = clock.elapsed();
    QByteArray body;
    while (const auto piece = co_await pieces.next(stop)) {
        if (piece->size() > VeniceSignedMeasurementList::sizeLimit - body.size())
            throw Failure(Failure::Plain::tooLarge);
        if (clock.elapsed() - start > longestRead)
            throw Failure(Failure::Plain::tooSlow);
        body.append(*piece);
    }
    co_return body;
}

} // namespace

QCoro::Task<VeniceListFetch::Files> VeniceListFetch::both(VeniceListFetch self, std::stop_token stop)
{
    const QUrl listURL = self.urlOf(u"measurements"_s);
    const QUrl signatureURL = self.urlOf(u"measurements.sig"_s);
    Files files;
    files.list = co_await file(self, listURL, stop);
    files.signature = co_await file(self, signatureURL, stop);
    co_return files;
}

QUrl VeniceListFetch::urlOf(const QString &name) const
{
    const auto url = VeniceEndpoint::url(m_baseURLString, name);
    if (!url)
        throw Failure(Failure::Plain::badEndpoint);
    return *url;
}

QCoro::Task<QByteArray> VeniceListFetch::file(VeniceListFetch self, QUrl url, std::stop_token stop)
{
    const auto session = self.m_sessions.session(EgressFeature::serverList, {});
    HttpRequest request;
    request.url = std::move(url);
    request.timeout = 10s;
    HttpResponse response = co_await session->send(std::move(request), stop);
    if (response.status < 200 || response.status > 299)
        throw Failure(Failure::Http{response.status});
    AsyncStream<QByteArray> pieces = std::move(response.body);
    QByteArray body = co_await readWithin(self.m_clock, std::move(pieces), stop);
    co_return body;
}

} // namespace morvane
