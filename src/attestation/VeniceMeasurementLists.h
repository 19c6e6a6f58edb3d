#pragma once

#include "async/Lifeline.h"
#include "async/SharedResult.h"
#include "async/TaskHandle.h"
#include "async/Work.h"
#include "attestation/VeniceListFetch.h"
#include "attestation/VeniceMeasurementAnchorStore.h"
#include "attestation/VeniceMeasurementListStore.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"

#include <optional>
#include <variant>
#include <vector>

namespace morvane {

// The servers that are accepted now: those of the last good signed list, else those built into the program,
// in both cases without what was ever withdrawn. Fetches newer lists by itself. At every failure the last
// good list stays, and a list is taken whole or not at all; where what was remembered can't be read, no
// server is accepted. GUI thread.
class VeniceMeasurementLists {
public:
    using Refresh = SharedResult<bool>; // true when a newer list was accepted

    struct Parts {
        VeniceMeasurementListStore store;
        VeniceMeasurementAnchorStore anchors;
        VeniceListFetch fetch;
        VeniceMeasurementAllowlist bundled;
        std::vector<QByteArray> publicKeys; // 32 bytes each, the keys that lists are signed with
    };

    // `work`, and what the parts refer to, outlive this object's tasks.
    VeniceMeasurementLists(Work &work, Parts parts);

    // Whether lists may be used at all; asked before each use. Throws CancelledError.
    [[nodiscard]] QCoro::Task<bool> prepare(std::stop_token stop);

    // The running or newly started refresh; nothing when none is due. Throws CancelledError.
    [[nodiscard]] QCoro::Task<std::optional<Refresh>> refreshIfDue(QDateTime now, std::stop_token stop);

    // For a proof that was refused: whether a newer list has come that might say otherwise. Throws
    // CancelledError.
    [[nodiscard]] QCoro::Task<bool> refreshAfterRefusal(QDateTime now, std::stop_token stop);

    // What to judge with. Accepts nothing unless the latest prepare() said yes.
    [[nodiscard]] VeniceMeasurementAllowlist allowlist(const QDateTime &now) const;

private:
    using Signed = VeniceSignedMeasurementList::Signed;
    using State = VeniceMeasurementListStore::State;

    // A list that may be taken, and the mark it would leave.
    struct Judged {
        Signed signedList;
        VeniceMeasurementListAnchor::Mark mark;
    };
    using Verdict = std::variant<Judged, VeniceSignedMeasurementList::Refusal>;

    [[nodiscard]] static Verdict judge(const VeniceListFetch::Files &files,
                                       const std::vector<QByteArray> &keys,
                                       const VeniceMeasurementListAnchor &anchor);
    [[nodiscard]] QCoro::Task<bool> readAnchor(std::stop_token stop);
    [[nodiscard]] QCoro::Task<bool> readState(std::stop_token stop);
    [[nodiscard]] QCoro::Task<> judgeState(std::stop_token stop);
    [[nodiscard]] Refresh startRefresh(const QDateTime &now);
    static QCoro::Task<> refreshInto(VeniceMeasurementLists *self, QDateTime now, Refresh result,
                                     std::stop_token stop);
    [[nodiscard]] QCoro::Task<bool> refresh(QDateTime now, std::stop_token stop);
    [[nodiscard]] QCoro::Task<bool> take(VeniceListFetch::Files files, std::stop_token stop);
    [[nodiscard]] QCoro::Task<Verdict> verdictOn(VeniceListFetch::Files files, std::stop_token stop);
    [[nodiscard]] QCoro::Task<bool> advance(Judged judged, std::stop_token stop);

    Work &m_work;
    const Parts m_parts;
    std::optional<State> m_state;                        // as it was loaded, then as it was accepted
    std::optional<VeniceMeasurementListAnchor> m_anchor; // as the latest prepare() read it
    std::optional<Signed> m_current;
    bool m_isStateJudged = false;
    std::optional<Refresh> m_inFlight;
    TaskHandle m_refreshing;
    Lifeline m_lifeline;
};

} // namespace morvane
