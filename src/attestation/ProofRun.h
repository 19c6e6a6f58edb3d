#pragma once

#include "attestation/ProofWatch.h"

#include <memory>

namespace morvane {

// One run of a ProofWatch, told by those who ask for the proof and who give it. Copies share it; the run ends
// with the last of them, however that goes. GUI thread.
class ProofRun {
public:
    // Nobody watches.
    ProofRun() = default;

    // Begins a run, where there is a watch.
    ProofRun(ProofWatch *watch, const QString &model, const QDateTime &startedAt);

    // The stage that was at work has passed, and this one is.
    void enter(ProofWatch::Stage stage) const;
    // The same with no further stage.
    void leave() const;
    // What runs there asks for no such proof.
    void skip(ProofWatch::Stage stage) const;
    void takeEarlier(bool hasGraphicsChips) const;

    // Nothing more will come, whoever still holds a copy.
    void end() const;

private:
    struct Told;

    std::shared_ptr<Told> m_told; // none: nobody watches
};

} // namespace morvane
