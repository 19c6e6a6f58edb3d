#include "view_models/chat/AnswerProofs.h"

#include "models/ChatMessage.h"
#include "view_models/chat/ProofWords.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString AnswerProofs::Line::code() const
{
    switch (mark) {
    case Mark::none:
        return {};
    case Mark::place:
        return u"place"_s;
    case Mark::running:
        return u"running"_s;
    case Mark::verified:
        return u"verified"_s;
    case Mark::refused:
        return u"refused"_s;
    }
    return {};
}

AnswerProofs::AnswerProofs(const ProofLedger &ledger)
    : m_ledger(ledger)
{}

void AnswerProofs::watch(const ProofWatch &watch)
{
    if (m_watch)
        m_watch->disconnect(this);
    m_watch = &watch;
    connect(&watch, &ProofWatch::changed, this, &AnswerProofs::takeSteps);
}

void AnswerProofs::follow(const QUuid &answer, std::shared_ptr<const QUuid> row)
{
    const QUuid firstRow = *row;
    m_followed.insert_or_assign(answer, Followed{std::move(row), firstRow, {}});
    m_latest = answer;
    m_formerRun = m_watch && m_watch->run() ? m_watch->run()->number : 0;
}

// A run that began before the latest turn is a former one's, which was stopped.
void AnswerProofs::takeSteps()
{
    const auto latest = m_followed.find(m_latest);
    const auto &run = m_watch->run();
    if (latest == m_followed.end() || !run || run->number <= m_formerRun)
        return;
    latest->second.steps = run;
    Q_EMIT changed(m_latest);
}

bool AnswerProofs::note(ChatMessage &answer, const QUuid &row)
{
    const std::optional<ProofLedger::Entry> entry = m_ledger.find(row);
    if (!entry)
        return false;
    answer.setPlaceRaw(entry->place.code());
    if (entry->attestation && entry->attestation != m_last) {
        m_rows[answer.id()] = row;
        m_last = entry->attestation;
    }
    return true;
}

AnswerProofs::Known AnswerProofs::known(const QUuid &answer) const
{
    const auto found = m_followed.find(answer);
    if (found == m_followed.end())
        return {};
    const Followed &followed = found->second;
    Known known{.row = m_ledger.find(*followed.row), .before = {}, .steps = followed.steps};
    known.before = m_ledger.find(followed.firstRow);
    if (known.before && known.row && known.before->place.kind == known.row->place.kind)
        known.before.reset(); // at one place a reply may have several rows
    return known;
}

AnswerProofs::Line AnswerProofs::line(const ChatMessage &answer, bool isRunning) const
{
    const Known known = this->known(answer.id());
    if (isRunning && known.steps && !known.steps->isOver)
        return {ProofWords::underWay(*known.steps), Line::Mark::running};
    if (known.row && known.row->attestation)
        return {ProofWords::result(*known.row), Line::Mark::verified};
    if (isRunning)
        return {};
    if (known.row && known.before)
        return {ProofWords::fallback(*known.row, *known.before), Line::Mark::refused};
    if (known.row && ProofWords::isRefused(*known.row))
        return {ProofWords::refusal(*known.row), Line::Mark::refused};
    const auto place = placeNameOfCode(answer.placeRaw().value_or(QString()));
    return place ? Line{*place, Line::Mark::place} : Line{};
}

} // namespace morvane
