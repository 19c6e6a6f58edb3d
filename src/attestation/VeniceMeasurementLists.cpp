#include "attestation/VeniceMeasurementLists.h"

#include "attestation/evidence/Digest.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using List = VeniceSignedMeasurementList;
using Anchor = VeniceMeasurementListAnchor;

constexpr qint64 refreshInterval = 21600;    // seconds: six hours
constexpr qint64 pauseBetweenRefusals = 300; // seconds: a wave of refused proofs must not hammer the endpoint
constexpr auto category = Log::Category::AIProvider;

// Seconds since the last attempt; nothing without one, and for one that lies in the future.
std::optional<qint64> secondsSince(const std::optional<QDateTime> &attempt, const QDateTime &now)
{
    if (!attempt || *attempt > now)
        return std::nullopt;
    return attempt->secsTo(now);
}

void logAccepted(const List &list, const QDateTime &now)
{
    Log::info(category,
              "Accepted servers list: version %{public}s accepted (%ld entries, %ld withdrawn%{public}s)"_L1,
              {QString::number(list.listVersion), list.entries.size(), list.revoked.size(),
               now >= list.notAfter ? u", already expired: only its withdrawals count"_s : QString()});
}

} // namespace

VeniceMeasurementLists::Verdict VeniceMeasurementLists::judge(const VeniceListFetch::Files &files,
                                                              const std::vector<QByteArray> &keys,
                                                              const VeniceMeasurementListAnchor &anchor)
{
    try {
        const auto floorOf = [&anchor](const QByteArray &key) { return anchor.floorOf(key); };
        Signed verified = List::verify(files.list, files.signature, keys, floorOf);
        const Anchor::Mark mark{verified.list.listVersion, Digest::sha256Hex(files.list)};
        const auto known = anchor.markOf(verified.key);
        if (known && known->version == mark.version && known->sha256 != mark.sha256)
            return List::Refusal(List::Refusal::SameVersionDifferentList{mark.version});
        return Judged{std::move(verified), mark};
    } catch (const List::Refusal &refusal) {
        return refusal;
    }
}

VeniceMeasurementLists::VeniceMeasurementLists(Work &work, Parts parts)
    : m_work(work)
    , m_parts(std::move(parts))
{}

QCoro::Task<bool> VeniceMeasurementLists::prepare(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const bool hasState = co_await readState(stop);
    check();
    const bool hasAnchor = co_await readAnchor(stop);
    check();
    if (!hasState || !hasAnchor)
        co_return false;
    co_await judgeState(stop);
    co_return true;
}

QCoro::Task<bool> VeniceMeasurementLists::readState(std::stop_token stop)
{
    if (m_state)
        co_return true;
    const auto check = m_lifeline.check(stop);
    const std::function<VeniceMeasurementListStore::Loaded()> load = [store = m_parts.store] {
        return store.load();
    };
    const auto loaded = co_await m_work.run(load, stop);
    check();
    const State *state = std::get_if<State>(&loaded);
    if (state && !m_state)
        m_state = *state;
    co_return m_state.has_value();
}

QCoro::Task<bool> VeniceMeasurementLists::readAnchor(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const std::function<std::optional<Anchor>()> read = [anchors =
                                                             m_parts.anchors]() -> std::optional<Anchor> {
        try {
            return anchors.read();
        } catch (const std::exception &) {
            return std::nullopt;
        }
    };
    std::optional<Anchor> anchor = co_await m_work.run(read, stop);
    check();
    if (!anchor)
        Log::error(category,
                   "Accepted servers list: the Keychain would not give up what this %{public}s remembers, "
                   "so no server is accepted"_L1,
                   {DesktopWords::here().device.toString()});
    if (anchor != m_anchor)
        m_isStateJudged = false;
    m_anchor = std::move(anchor);
    co_return m_anchor.has_value();
}

QCoro::Task<> VeniceMeasurementLists::judgeState(std::stop_token stop)
{
    if (std::exchange(m_isStateJudged, true))
        co_return;
    const auto check = m_lifeline.check(stop);
    m_current.reset();
    if (!m_state->list || !m_state->signature)
        co_return;
    VeniceListFetch::Files saved{*m_state->list, *m_state->signature};
    const Verdict verdict = co_await verdictOn(std::move(saved), stop);
    check();
    const auto *judged = std::get_if<Judged>(&verdict);
    if (!judged)
        co_return;
    const bool isRemembered = co_await advance(*judged, stop);
    check();
    if (isRemembered)
        m_current = judged->signedList;
    m_isStateJudged = isRemembered;
}

// Throws CancelledError. Without an anchor nothing may be judged.
QCoro::Task<VeniceMeasurementLists::Verdict> VeniceMeasurementLists::verdictOn(VeniceListFetch::Files files,
                                                                               std::stop_token stop)
{
    if (!m_anchor)
        throw CancelledError();
    const std::function<Verdict()> work = [files = std::move(files), keys = m_parts.publicKeys,
                                           anchor = *m_anchor] { return judge(files, keys, anchor); };
    Verdict verdict = co_await m_work.run(work, stop);
    co_return verdict;
}

QCoro::Task<std::optional<VeniceMeasurementLists::Refresh>>
VeniceMeasurementLists::refreshIfDue(QDateTime now, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const bool isReady = co_await prepare(stop);
    check();
    if (!isReady)
        co_return std::nullopt;
    if (m_inFlight)
        co_return Refresh(*m_inFlight);
    const auto age = secondsSince(m_state->lastFetchAt, now);
    if (age && *age < refreshInterval)
        co_return std::nullopt;
    co_return startRefresh(now);
}

QCoro::Task<bool> VeniceMeasurementLists::refreshAfterRefusal(QDateTime now, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const bool isReady = co_await prepare(stop);
    check();
    if (!isReady)
        co_return false;
    const auto age = secondsSince(m_state->lastFetchAt, now);
    if (age && *age < pauseBetweenRefusals)
        co_return false;
    const Refresh refreshing = m_inFlight ? *m_inFlight : startRefresh(now);
    const bool isNewer = co_await refreshing.wait(stop);
    co_return isNewer;
}

VeniceMeasurementLists::Refresh VeniceMeasurementLists::startRefresh(const QDateTime &now)
{
    const Refresh result;
    m_inFlight = result;
    m_refreshing = TaskHandle::start([this, now, result](std::stop_token stop) {
        return refreshInto(this, now, result, std::move(stop));
    });
    return result;
}

QCoro::Task<> VeniceMeasurementLists::refreshInto(VeniceMeasurementLists *self, QDateTime now, Refresh result,
                                                  std::stop_token stop)
{
    const auto check = self->m_lifeline.check(stop);
    bool isNewer = false;
    try {
        isNewer = co_await self->refresh(now, stop);
    } catch (const std::exception &) {
        // What was remembered can't be read any more. Whoever waits hears that nothing newer came.
    }
    check();
    self->m_inFlight.reset();
    result.resolve(isNewer);
}

// Counts the attempt before anything is fetched, so that a failing endpoint is tried at the normal rate.
QCoro::Task<bool> VeniceMeasurementLists::refresh(QDateTime now, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    m_state->lastFetchAt = now;
    std::optional<VeniceListFetch::Files> files;
    try {
        files = co_await m_parts.fetch.files(stop);
    } catch (const CancelledError &) {
        throw;
    } catch (const std::exception &) {
        Log::info(category, "Accepted servers list: could not be fetched; the last good list stays"_L1);
    }
    check();
    bool isNewer = false;
    if (files) {
        isNewer = co_await take(*std::move(files), stop);
        check();
    }
    const std::function<void()> save = [store = m_parts.store, state = *m_state] { store.save(state); };
    co_await m_work.run(save, stop);
    check();
    if (isNewer && m_current)
        logAccepted(m_current->list, now);
    co_return isNewer;
}

QCoro::Task<bool> VeniceMeasurementLists::take(VeniceListFetch::Files files, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const Verdict verdict = co_await verdictOn(files, stop);
    check();
    if (const auto *refusal = std::get_if<List::Refusal>(&verdict)) {
        Log::info(category, "Accepted servers list: ignored whole, the last good list stays (%{public}s)"_L1,
                  {refusal->caseText()});
        co_return false;
    }
    if (m_state->list == files.list && m_state->signature == files.signature)
        co_return false;
    const Judged &judged = std::get<Judged>(verdict);
    const bool isRemembered = co_await advance(judged, stop);
    check();
    if (!isRemembered)
        co_return false;
    m_state->list = std::move(files.list);
    m_state->signature = std::move(files.signature);
    m_current = judged.signedList;
    m_isStateJudged = true;
    co_return true;
}

// Remembers the list's version and withdrawals before it is used. False when that can't be done.
QCoro::Task<bool> VeniceMeasurementLists::advance(Judged judged, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (!m_anchor)
        co_return false;
    const Anchor next = m_anchor->after(judged.signedList.key, judged.mark, judged.signedList.list.revoked);
    if (next == *m_anchor)
        co_return true;
    const std::function<bool()> save = [anchors = m_parts.anchors, next] {
        try {
            anchors.save(next);
            return true;
        } catch (const std::exception &) {
            return false;
        }
    };
    const bool isSaved = co_await m_work.run(save, stop);
    check();
    if (isSaved)
        m_anchor = next;
    else
        Log::info(
            category,
            "Accepted servers list: the Keychain would not remember version %{public}s, so it is not accepted"_L1,
            {QString::number(judged.mark.version)});
    co_return isSaved;
}

VeniceMeasurementAllowlist VeniceMeasurementLists::allowlist(const QDateTime &now) const
{
    if (!m_anchor || !m_state)
        return {};
    const VeniceMeasurementAllowlist accepted =
        m_current ? m_current->list.allowlistAt(now, m_parts.bundled) : m_parts.bundled;
    return accepted.withdrawing(m_anchor->revoked);
}

} // namespace morvane
