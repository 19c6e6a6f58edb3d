#include "network/HttpExchange.h"

#include "async/Clock.h"
#include "network/PrivateNetworkAddress.h"
#include "network/Redirect.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;
using Verdict = CurlTransfer::Verdict;

namespace {

// Body bytes that may wait for a slow consumer before the sender is held back.
constexpr qsizetype unreadLimit = qsizetype{256} * 1024;

// A redirect's own body is read up to here, so that its connection can be used again.
constexpr qsizetype discardLimit = qsizetype{64} * 1024;

QString withPlaceholder(const QString &host)
{
    return host.isEmpty() ? u"(no host)"_s : host;
}

qint64 secondsOf(std::chrono::milliseconds time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time).count();
}

bool isLocalAddress(const QByteArray &bytes)
{
    return PrivateNetworkAddress::isInside(bytes, PrivateNetworkAddress::machineSubnets());
}

// What counts as near by its name is connected to only where it is near by its address, so that a name whose
// address changes behind the gate's back takes nothing along.
AddressRule ruleFor(const QUrl &url, const AddressRule &callersRule)
{
    if (!PrivateNetworkAddress::isNear(EgressGate::hostOf(url)))
        return callersRule;
    return [callersRule](const QByteArray &bytes) {
        return isLocalAddress(bytes) && (!callersRule || callersRule(bytes));
    };
}

} // namespace

HttpExchange::HttpExchange(const Setting &setting, HttpRequest request)
    : m_setting(setting)
    , m_request(std::move(request))
{}

AsyncStream<HttpResponse> HttpExchange::start(const std::stop_token &stop)
{
    auto [stream, producer] = AsyncStream<HttpResponse>::make();
    m_head.emplace(producer);
    m_onHeadDropped.emplace(producer.stopToken(), [this] { cancel(); });
    m_onStop.emplace(stop, [this] { cancel(); }); // at once when it is triggered already
    if (m_isOver)
        return std::move(stream);
    if (m_request.limit)
        m_limitAlarm = m_setting.clock.after(*m_request.limit, [this, limit = *m_request.limit] {
            fail(TransportError(Code::TimedOut,
                                u"The answer was not complete after %1 seconds."_s.arg(secondsOf(limit))));
        });
    openHop();
    return std::move(stream);
}

void HttpExchange::abandon()
{
    const TransportError error(Code::Cancelled, u"The request was cancelled."_s);
    end({EgressOutcome::Failed{error.description()}}, std::make_exception_ptr(error));
}

std::optional<QString> HttpExchange::refusalOf(const QUrl &url) const
{
    const auto reach = m_setting.carrying ? EgressGate::Reach::PrivateOnly : EgressGate::Reach::Anywhere;
    return EgressGate::refusalReason(url, reach);
}

void HttpExchange::openHop()
{
    m_rows.push_back(row());
    if (const auto reason = refusalOf(m_request.url)) {
        fail(TransportError(Code::Blocked, EgressGate::refusal(*reason)));
        return;
    }
    m_bodyUse = Body::Undecided;
    m_discarded = 0;
    m_lastMovement = m_setting.clock.elapsed();
    CurlTransfer::Observer &observer = *this;
    try {
        m_transfer = std::make_unique<CurlTransfer>(m_setting.loop, observer, m_request,
                                                    ruleFor(m_request.url, m_setting.mayConnect),
                                                    m_setting.authorities);
    } catch (const TransportError &error) {
        fail(error);
        return;
    }
    watchSilence();
}

// Takes what the hop's row needs and cuts the connection if the response isn't complete.
void HttpExchange::closeHop()
{
    if (!m_transfer)
        return;
    const auto [sent, received] = m_transfer->traffic();
    const int status = m_transfer->status();
    NetworkLedger::Entry &entry = m_rows.back();
    entry.bytesSent = sent;
    entry.bytesReceived = received;
    entry.outcome = {EgressOutcome::Completed{status == 0 ? std::nullopt : std::optional(status)}};
    m_transfer.reset();
}

void HttpExchange::bytesMoved()
{
    m_lastMovement = m_setting.clock.elapsed();
}

Verdict HttpExchange::bodyArrived(QByteArrayView piece)
{
    switch (m_bodyUse) {
    case Body::Undecided:
        return Verdict::HoldBack;
    case Body::Discarded:
        m_discarded += piece.size();
        return m_discarded > discardLimit ? Verdict::Enough : Verdict::Taken;
    case Body::Delivered:
        break;
    }
    if (m_unread > 0 && m_unread + piece.size() > unreadLimit)
        return Verdict::HoldBack;
    m_unread += piece.size();
    m_unreadSizes.push_back(piece.size());
    m_body->yield(piece.toByteArray());
    return Verdict::Taken;
}

void HttpExchange::drained()
{
    while (m_unreadSizes.size() > m_body->buffered()) {
        m_unread -= m_unreadSizes.front();
        m_unreadSizes.pop_front();
    }
    if (m_transfer && m_transfer->isHeldBack() && m_unread <= unreadLimit / 2)
        m_transfer->resumeSoon();
}

void HttpExchange::headArrived()
{
    const auto self = shared_from_this();
    const auto next = Redirect::target(m_transfer->status(), m_transfer->headers(), m_request.url);
    if (next && m_request.redirects == HttpRequest::Redirects::Followed)
        redirect(*next);
    else
        answer();
}

// The gate comes before the caller's own rule, and both before anything of the next hop exists.
void HttpExchange::redirect(const QUrl &target)
{
    if (refusalOf(target)) { // the hop's own row tells it, and not the row of the host that was reached
        closeHop();
        m_request.url = target;
        openHop();
        return;
    }
    if (m_request.followsRedirect && !m_request.followsRedirect(m_request.url, target)) {
        if (!m_isOver) // the caller may have stopped it while it was asked
            answer();
        return;
    }
    if (m_isOver)
        return;
    if (m_hops == Redirect::limit) {
        fail(TransportError(Code::TooManyRedirects, u"The server redirected the request too often."_s));
        return;
    }
    m_next = target;
    m_redirectStatus = m_transfer->status();
    m_bodyUse = Body::Discarded;
    m_transfer->resumeSoon();
}

void HttpExchange::answer()
{
    auto [stream, producer] = AsyncStream<QByteArray>::make();
    m_body.emplace(producer);
    m_body->onDrain([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->drained();
    });
    m_bodyUse = Body::Delivered;
    m_onBodyDropped.emplace(producer.stopToken(), [this] { bodyDropped(); });
    // From here on the response's body stands for the request; its stream of one head may go.
    m_onHeadDropped.reset();
    m_head->yield(HttpResponse{.status = m_transfer->status(),
                               .url = m_request.url,
                               .headers = m_transfer->headers(),
                               .body = std::move(stream)});
    m_head->finish();
    m_transfer->resumeSoon();
}

void HttpExchange::ended(const std::optional<TransportError> &error)
{
    const auto self = shared_from_this();
    if (m_bodyUse == Body::Discarded) { // its head was complete, and no one wants the rest
        closeHop();
        ++m_hops;
        m_request = Redirect::following(std::move(m_request), m_redirectStatus, m_next);
        openHop();
    } else if (error) {
        fail(*error);
    } else {
        end({EgressOutcome::Completed{m_transfer->status()}}, nullptr);
    }
}

void HttpExchange::watchSilence()
{
    const auto due = m_lastMovement + m_request.timeout;
    m_alarm = m_setting.clock.after(due - m_setting.clock.elapsed(), [this] { silenceChecked(); });
}

void HttpExchange::silenceChecked()
{
    const auto now = m_setting.clock.elapsed();
    if (m_transfer && m_transfer->isHeldBack())
        m_lastMovement = now; // the silence is of our own making
    if (now - m_lastMovement < m_request.timeout) {
        watchSilence();
        return;
    }
    fail(TransportError(Code::TimedOut,
                        u"Nothing was sent or received for %1 seconds."_s.arg(secondsOf(m_request.timeout))));
}

void HttpExchange::cancel()
{
    end({EgressOutcome::Failed{u"The request was cancelled."_s}}, std::make_exception_ptr(CancelledError()));
}

// Whoever wasn't stopped has all that they wanted of the response.
void HttpExchange::bodyDropped()
{
    if (m_body && m_body->wasStopped())
        cancel();
    else if (m_transfer)
        end({EgressOutcome::Completed{m_transfer->status()}}, nullptr);
}

void HttpExchange::fail(const TransportError &error)
{
    if (error.code() == Code::Blocked)
        end({EgressOutcome::Blocked{error.description()}}, std::make_exception_ptr(error));
    else
        end({EgressOutcome::Failed{error.description()}}, std::make_exception_ptr(error));
}

void HttpExchange::end(const EgressOutcome &outcome, const std::exception_ptr &error)
{
    if (std::exchange(m_isOver, true))
        return;
    const auto self = shared_from_this();
    m_alarm.reset();
    m_limitAlarm.reset();
    closeHop();
    record(outcome); // first, so that the rows are there when the caller hears of the end
    if (m_body && error)
        m_body->fail(error);
    else if (m_body)
        m_body->finish();
    else
        m_head->fail(error);
    m_setting.ended(*this);
}

void HttpExchange::record(const EgressOutcome &outcome)
{
    if (m_rows.empty())
        m_rows.push_back(row());
    m_rows.back().outcome = outcome;
    for (NetworkLedger::Entry &entry : m_rows)
        m_setting.ledger.record(std::move(entry));
}

NetworkLedger::Entry HttpExchange::row() const
{
    NetworkLedger::Entry entry;
    entry.startedAt = m_setting.clock.now();
    entry.host = withPlaceholder(EgressGate::hostOf(m_request.url));
    entry.feature = m_setting.feature;
    entry.carrying = m_setting.carrying;
    return entry;
}

} // namespace morvane
