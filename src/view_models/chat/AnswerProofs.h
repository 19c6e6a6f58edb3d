#pragma once

#include "attestation/ProofLedger.h"
#include "attestation/ProofWatch.h"

#include <QObject>
#include <QPointer>

#include <map>
#include <memory>

namespace morvane {

class ChatMessage;

// Ties answers to their rows in the proof ledger, and to the steps of the proof that was asked for meanwhile.
// Lasts as long as the program runs; after that only a place is known of an answer. GUI thread.
class AnswerProofs : public QObject {
    Q_OBJECT
public:
    // What the line under an answer says.
    struct Line {
        enum class Mark { none, place, running, verified, refused };

        QString words;
        Mark mark = Mark::none;

        // The mark's name as the view knows it; empty for none.
        [[nodiscard]] QString code() const;
    };

    // What is known of an answer now.
    struct Known {
        std::optional<ProofLedger::Entry> row;
        // Of the private cloud, which was asked first where the answer then came from elsewhere.
        std::optional<ProofLedger::Entry> before;
        std::optional<ProofWatch::Run> steps;
    };

    // `ledger` outlives this object.
    explicit AnswerProofs(const ProofLedger &ledger);

    // Whose steps are told from now on.
    void watch(const ProofWatch &watch);

    // The turn of this answer is open. `row` names its row at any time; another one once the turn has moved.
    void follow(const QUuid &answer, std::shared_ptr<const QUuid> row);

    // Stores the row's place with the answer. False when there is no such row, and nothing is changed.
    bool note(ChatMessage &answer, const QUuid &row);

    // The row of each answer whose hardware proof differs from that of the answer before it, by message id.
    [[nodiscard]] const std::map<QUuid, QUuid> &rows() const { return m_rows; }

    [[nodiscard]] Known known(const QUuid &answer) const;
    // Of an answer that is still being written only its proof is told.
    [[nodiscard]] Line line(const ChatMessage &answer, bool isRunning) const;

Q_SIGNALS:
    void changed(const QUuid &answer);

private:
    struct Followed {
        std::shared_ptr<const QUuid> row;
        QUuid firstRow;
        std::optional<ProofWatch::Run> steps;
    };

    void takeSteps();

    const ProofLedger &m_ledger;
    QPointer<const ProofWatch> m_watch;
    std::map<QUuid, QUuid> m_rows;
    std::optional<ProofLedger::Attestation> m_last;
    std::map<QUuid, Followed> m_followed;
    QUuid m_latest;          // the answer whose turn began last
    quint64 m_formerRun = 0; // the number of the last run before it
};

} // namespace morvane
