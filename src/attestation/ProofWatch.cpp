#include "attestation/ProofWatch.h"

#include <algorithm>

namespace morvane {

ProofWatch::Run *ProofWatch::find(quint64 number)
{
    return m_run && m_run->number == number ? &*m_run : nullptr;
}

quint64 ProofWatch::begin(const QString &model, const QDateTime &startedAt)
{
    m_run = Run{.number = ++m_count, .model = model, .startedAt = startedAt};
    Q_EMIT changed();
    return m_count;
}

void ProofWatch::set(quint64 number, Stage stage, State state)
{
    Run *run = find(number);
    if (!run || run->isOver || run->at(stage) == state)
        return;
    run->states.at(static_cast<std::size_t>(stage)) = state;
    Q_EMIT changed();
}

void ProofWatch::takeEarlier(quint64 number, bool hasGraphicsChips)
{
    Run *run = find(number);
    if (!run || run->isOver)
        return;
    run->isFromEarlier = true;
    std::fill(run->states.begin(), run->states.begin() + static_cast<std::ptrdiff_t>(Stage::sealing),
              State::passed);
    if (!hasGraphicsChips)
        run->states.at(static_cast<std::size_t>(Stage::graphicsChips)) = State::notChecked;
    Q_EMIT changed();
}

void ProofWatch::end(quint64 number)
{
    Run *run = find(number);
    if (!run || run->isOver)
        return;
    std::replace(run->states.begin(), run->states.end(), State::running, State::refused);
    run->isOver = true;
    Q_EMIT changed();
}

} // namespace morvane
