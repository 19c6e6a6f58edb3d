#pragma once

#include "ai/contract/AIProvider.h"
#include "ai/routing/PreparedRequest.h"

#include <QUuid>

#include <memory>

namespace morvane {

// A turn that is ready to be streamed.
struct OpenedTurn {
    PreparedRequest request;
    std::shared_ptr<AIProvider> provider;

    // The row of the proof ledger that tells where the answer runs. Another one once the reply has moved to
    // another place or carries more, so whoever asks does so when the reply has ended. A turn that sent
    // nothing has no such row in the ledger.
    std::shared_ptr<QUuid> proofRow = std::make_shared<QUuid>();
};

} // namespace morvane
