#include "services/PageReader.h"

#include "async/Work.h"
#include "network/Redirect.h"
#include "services/PageAddress.h"
#include "services/PageText.h"
#include "services/WebAccessError.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Page = WebAccessing::Page;
using Plain = WebAccessError::Plain;

namespace {

constexpr qsizetype maxPageBytes = 5'242'880; // decoded from any compression
constexpr qsizetype leastCharacters = 40;

HttpRequest requestFor(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    request.headers = {{"Accept", "text/html,application/xhtml+xml"},
                       {"Accept-Encoding", "gzip"},
                       {"User-Agent", "Mozilla/5.0 (Macintosh; Intel Mac OS X) MorvaneGPT/1.0"}};
    request.timeout = 25s;
    request.redirects = HttpRequest::Redirects::Answered;
    return request;
}

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

Page extracted(const QByteArray &body, const QString &host, qsizetype limit)
{
    QString html = PageText::decoded(body);
    QString title = PageText::title(html);
    if (title.isEmpty())
        title = host;
    const QString text = PageText::text(std::move(html));
    if (!Text::hasAtLeast(text, leastCharacters))
        throw WebAccessError(Plain::unreadablePage);
    if (PageText::isBotWall(title, text))
        throw WebAccessError(WebAccessError::BlockedByBotProtection{host});
    // A title is as long as its page makes it.
    return {Text::prefix(title, limit), Text::prefix(text, limit)};
}

Plain reasonOf(const TransportError &error)
{
    switch (error.code()) {
    case TransportError::Code::Blocked: // by its real address: all else was judged before
        return Plain::privateAddress;
    case TransportError::Code::ResponseTooLarge:
        return Plain::pageTooLarge;
    case TransportError::Code::Cancelled:
        return Plain::cancelled;
    case TransportError::Code::BadURL:
    case TransportError::Code::UnsupportedURL:
    case TransportError::Code::TimedOut:
    case TransportError::Code::HostNotFound:
    case TransportError::Code::CannotConnect:
    case TransportError::Code::ConnectionLost:
    case TransportError::Code::InsecureConnection:
    case TransportError::Code::UnreadableResponse:
    case TransportError::Code::TooManyRedirects:
    case TransportError::Code::Other:
        break;
    }
    return Plain::offline;
}

} // namespace

PageReader::PageReader(std::shared_ptr<HttpSession> session, HostLookup hosts, Work &work, Subnets subnets)
    : m_session(std::move(session))
    , m_hosts(std::move(hosts))
    , m_work(&work)
    , m_subnets(subnets)
{}

QCoro::Task<Page> PageReader::read(QString url, qsizetype limit, std::stop_token stop) const
{
    return readPage(*this, url, limit, stop);
}

QCoro::Task<Page> PageReader::readPage(PageReader self, QString text, qsizetype limit, std::stop_token stop)
{
    const QUrl url = PageAddress::parsed(text);
    const QString host = PageAddress::host(url);
    try {
        const bool isHidden = co_await isPrivate(self, host, stop);
        if (isHidden)
            throw WebAccessError(Plain::privateAddress);
        HttpResponse response = co_await fetch(self, url, stop);
        if (const int status = response.status; !isSuccess(status)) {
            co_await discardBody(std::move(response), stop);
            throw WebAccessError(WebAccessError::FetchFailed{status});
        }
        const QByteArray body = co_await readBody(std::move(response), maxPageBytes, stop);
        const auto extraction = [=] { return extracted(body, host, limit); };
        Page page = co_await self.m_work->run(extraction, stop);
        co_return page;
    } catch (const CancelledError &) {
        throw WebAccessError(Plain::cancelled);
    } catch (const TransportError &error) {
        throw WebAccessError(reasonOf(error));
    }
}

// Follows redirects one request at a time: the judgement of a hop's host waits for the resolver.
QCoro::Task<HttpResponse> PageReader::fetch(PageReader self, QUrl url, std::stop_token stop)
{
    HttpRequest request = requestFor(url);
    for (int hops = 0;; ++hops) {
        HttpResponse response = co_await self.m_session->send(request, stop);
        const auto target = Redirect::target(response.status, response.headers, request.url);
        if (!target)
            co_return std::move(response);
        const bool follows = co_await mayFollow(self, *target, stop);
        if (!follows)
            co_return std::move(response);
        if (hops == Redirect::limit)
            throw TransportError(TransportError::Code::TooManyRedirects,
                                 u"The server redirected the request too often."_s);
        request = Redirect::following(request, response.status, *target);
        co_await discardBody(std::move(response), stop);
    }
}

QCoro::Task<bool> PageReader::mayFollow(PageReader self, QUrl target, std::stop_token stop)
{
    if (target.scheme() != "https"_L1 || target.host().isEmpty())
        co_return false;
    const bool isHidden = co_await isPrivate(self, PageAddress::host(target), stop);
    co_return !isHidden;
}

// A name that leads nowhere counts as private, so it is never fetched.
QCoro::Task<bool> PageReader::isPrivate(PageReader self, QString host, std::stop_token stop)
{
    const PageAddress::Subnets machines = self.m_subnets();
    if (PageAddress::isPrivate(host, machines))
        co_return true;
    const QStringList addresses = co_await self.m_hosts.addresses(host, stop);
    const auto isNear = [&machines](const QString &address) {
        return PageAddress::isPrivateLiteral(address, machines);
    };
    co_return addresses.isEmpty() || std::any_of(addresses.begin(), addresses.end(), isNear);
}

} // namespace morvane
