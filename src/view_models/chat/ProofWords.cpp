#include "view_models/chat/ProofWords.h"

#include "attestation/evidence/VeniceAttestationVerifier.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using State = ProofWatch::State;

struct StepWords {
    QStringView name;
    QStringView question;
};

// In the order of ProofWatch::Stage. Questions, because most of them are shown before there is an answer.
constexpr std::array<StepWords, ProofWatch::stageCount> stepWords{{
    {u"Asking the server for its proof", u"Does it answer now, for 32 random bytes made up for this?"},
    {u"Checking the processor", u"Is its report signed, by certificates that lead to Intel's root?"},
    {u"Checking the base system", u"Is the image that was measured on the list of accepted servers?"},
    {u"Checking the boot",
     u"Is the configuration a reviewed one, and does its start lead to what was measured?"},
    {u"Checking graphics chip reports", u"Are they signed over the same bytes, and lead to NVIDIA's root?"},
    {u"Checking the key", u"Does the processor's report name the key that messages are encrypted to?"},
    {u"Sealing the message", u"Is it encrypted to that key before it leaves?"},
}};

QString codeOf(State state)
{
    switch (state) {
    case State::waiting:
        return u"waiting"_s;
    case State::running:
        return u"running"_s;
    case State::passed:
        return u"passed"_s;
    case State::notChecked:
        return u"notChecked"_s;
    case State::refused:
        return u"ended"_s;
    }
    return {};
}

// A step that was never begun stays open once the proof is over.
QString wordsOf(State state, const ProofWatch::Run &run)
{
    switch (state) {
    case State::waiting:
        return run.isOver ? u"Not reached"_s : u"Waits"_s;
    case State::running:
        return u"Under way"_s;
    case State::passed:
        return run.isFromEarlier ? u"Passed earlier"_s : u"Passed"_s;
    case State::notChecked:
        return u"Not checked"_s;
    case State::refused:
        return u"Ended here"_s;
    }
    return {};
}

} // namespace

bool ProofWords::isRefused(const ProofLedger::Entry &row)
{
    return row.place.kind == ProofLedger::Place::Kind::enclaveRefused;
}

QString ProofWords::result(const ProofLedger::Entry &row)
{
    return row.attestation ? u"Private cloud · "_s + row.resultText() : row.place.plainName();
}

// The ledger tells what was sealed or stayed near; of a service that was sent to in the open it says nothing
// true here.
QString ProofWords::outcome(const ProofLedger::Entry &row)
{
    switch (row.place.kind) {
    case ProofLedger::Place::Kind::enclaveRefused:
        return refusal(row);
    case ProofLedger::Place::Kind::yourOwnService:
    case ProofLedger::Place::Kind::ollamaCloud:
    case ProofLedger::Place::Kind::morvaneCloud:
        return u"Went to a service"_s;
    case ProofLedger::Place::Kind::thisMac:
    case ProofLedger::Place::Kind::network:
    case ProofLedger::Place::Kind::verifiedEnclave:
        return row.resultText();
    }
    return {};
}

QString ProofWords::reason(const ProofLedger::Entry &refused)
{
    QString reason = refused.note.value_or(QString());
    if (const QString ending = VeniceAttestationVerifier::Failure::localReplyEnding();
        reason.endsWith(ending))
        reason = reason.chopped(ending.size()) + u'.';
    return reason.isEmpty() ? u"No proof came."_s : reason;
}

QString ProofWords::refusal(const ProofLedger::Entry &refused)
{
    return u"Refused: "_s + reason(refused);
}

QString ProofWords::fallback(const ProofLedger::Entry &row, const ProofLedger::Entry &before)
{
    return isRefused(before) ? u"%1 · Private cloud refused: %2"_s.arg(row.place.plainName(), reason(before))
                             : u"%1 · In place of the private cloud"_s.arg(row.place.plainName());
}

QString ProofWords::underWay(const ProofWatch::Run &run)
{
    for (std::size_t stage = stepWords.size(); stage-- > 0;) {
        if (run.states.at(stage) == State::running)
            return stepWords.at(stage).name.toString() + u'…';
    }
    return u"Checking the server's proof…"_s;
}

QVariantList ProofWords::steps(const ProofWatch::Run &run)
{
    QVariantList steps;
    for (std::size_t stage = 0; stage < stepWords.size(); ++stage) {
        const State state = run.states.at(stage);
        steps += QVariantMap{{u"name"_s, stepWords.at(stage).name.toString()},
                             {u"question"_s, stepWords.at(stage).question.toString()},
                             {u"state"_s, codeOf(state)},
                             {u"words"_s, wordsOf(state, run)}};
    }
    return steps;
}

} // namespace morvane
