#pragma once

#include "async/Clock.h"
#include "network/CurlTransfer.h"
#include "network/EgressGate.h"
#include "network/NetworkLedger.h"

#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

class CurlLoop;

// One request from its first hop to the end of its body: takes each hop through the gate, follows redirects,
// holds the sender back, watches for silence, and writes the ledger rows when it is over.
//
// Held by its session while it runs; whatever ends it also takes it out of there.
class HttpExchange final : public std::enable_shared_from_this<HttpExchange>, private CurlTransfer::Observer {
public:
    struct Setting {
        EgressFeature feature{};
        SensitiveDataSet carrying;
        AddressRule mayConnect; // absent: any address
        QByteArray authorities; // PEM; none: the system's
        NetworkLedger &ledger;
        Clock &clock;
        CurlLoop &loop;
        std::function<void(HttpExchange &)> ended;
    };

    HttpExchange(const Setting &setting, HttpRequest request);

    // Yields the response of the last hop once its head is here, or fails. `stop` ends the exchange at once,
    // also later; so does dropping this stream. Dropping the response's body ends it as one that went well.
    [[nodiscard]] AsyncStream<HttpResponse> start(const std::stop_token &stop);

    // The session goes.
    void abandon();

private:
    enum class Body { Undecided, Discarded, Delivered };
    using OnStop = std::stop_callback<std::function<void()>>;

    void bytesMoved() override;
    CurlTransfer::Verdict bodyArrived(QByteArrayView piece) override;
    void headArrived() override;
    void ended(const std::optional<TransportError> &error) override;

    [[nodiscard]] std::optional<QString> refusalOf(const QUrl &url) const;
    void openHop();
    void closeHop();
    void redirect(const QUrl &target);
    void answer();
    void drained();
    void watchSilence();
    void silenceChecked();

    void cancel();
    void bodyDropped();
    void fail(const TransportError &error);
    void end(const EgressOutcome &outcome, const std::exception_ptr &error);
    void record(const EgressOutcome &outcome);
    [[nodiscard]] NetworkLedger::Entry row() const;

    Setting m_setting;
    HttpRequest m_request; // of the current hop
    int m_hops = 0;
    std::unique_ptr<CurlTransfer> m_transfer;
    std::vector<NetworkLedger::Entry> m_rows; // one for each hop; the last one's outcome is still open
    bool m_isOver = false;

    std::optional<AsyncStream<HttpResponse>::Producer> m_head;
    std::optional<AsyncStream<QByteArray>::Producer> m_body;
    std::optional<OnStop> m_onStop;
    std::optional<OnStop> m_onHeadDropped;
    std::optional<OnStop> m_onBodyDropped;

    Body m_bodyUse = Body::Undecided;
    int m_redirectStatus = 0; // of the response that m_next came from
    QUrl m_next;
    qsizetype m_discarded = 0;
    std::deque<qsizetype> m_unreadSizes; // of the pieces the consumer hasn't taken
    qsizetype m_unread = 0;

    std::unique_ptr<Alarm> m_alarm;
    std::unique_ptr<Alarm> m_limitAlarm;
    std::chrono::milliseconds m_lastMovement{0};
};

} // namespace morvane
