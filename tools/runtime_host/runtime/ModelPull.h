#pragma once

#include "ModelStore.h"
#include "PracticeFolder.h"

#include "loopback/Exchange.h"

namespace morvane {

// POST /api/pull: fetches a model layer by layer, goes on where a former pull stopped, and tells how far it
// is.
class ModelPull {
public:
    struct Surroundings {
        const ModelStore &store;
        const PracticeFolder &folder;
        HoldPoint &holdPoint;
        QString identityKey; // path
    };

    ModelPull(Exchange &exchange, const Surroundings &surroundings);

    Work run();

private:
    Work fetchAll();
    Work fetch(PretendRegistry::Layer layer);
    Work tell(QJsonObject line);
    Work tellStatus(const char *words);
    Work tellProgress(const PretendRegistry::Layer &layer, qint64 completed);
    Work endlessLine();
    // What goes wrong in the middle of the weights.
    Work playHalfWay();
    [[nodiscard]] bool plays(QLatin1StringView scenario) const { return m_scenario == scenario; }

    Exchange &m_exchange;
    const Surroundings &m_around;
    QString m_model;
    QString m_scenario;
    bool m_wasCut = false;
};

} // namespace morvane
