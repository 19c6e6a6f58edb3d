#include "attestation/ProofRun.h"

#include <QPointer>

#include <optional>

namespace morvane {

using Stage = ProofWatch::Stage;
using State = ProofWatch::State;

struct ProofRun::Told {
    Told(ProofWatch *watching, quint64 of)
        : watch(watching)
        , number(of)
    {}
    ~Told() { end(); }
    Told(const Told &) = delete;
    Told &operator=(const Told &) = delete;

    void set(Stage stage, State state) const
    {
        if (watch)
            watch->set(number, stage, state);
    }

    void passAtWork()
    {
        if (const auto stage = std::exchange(atWork, std::nullopt))
            set(*stage, State::passed);
    }

    void end() const
    {
        if (watch)
            watch->end(number);
    }

    QPointer<ProofWatch> watch;
    quint64 number;
    std::optional<Stage> atWork;
};

ProofRun::ProofRun(ProofWatch *watch, const QString &model, const QDateTime &startedAt)
{
    if (watch)
        m_told = std::make_shared<Told>(watch, watch->begin(model, startedAt));
}

void ProofRun::enter(Stage stage) const
{
    if (!m_told || m_told->atWork == stage)
        return;
    m_told->passAtWork();
    m_told->atWork = stage;
    m_told->set(stage, State::running);
}

void ProofRun::leave() const
{
    if (m_told)
        m_told->passAtWork();
}

void ProofRun::skip(Stage stage) const
{
    if (!m_told)
        return;
    if (m_told->atWork == stage)
        m_told->atWork.reset();
    m_told->set(stage, State::notChecked);
}

void ProofRun::takeEarlier(bool hasGraphicsChips) const
{
    if (!m_told)
        return;
    m_told->atWork.reset();
    if (m_told->watch)
        m_told->watch->takeEarlier(m_told->number, hasGraphicsChips);
}

void ProofRun::end() const
{
    if (m_told)
        m_told->end();
}

} // namespace morvane
