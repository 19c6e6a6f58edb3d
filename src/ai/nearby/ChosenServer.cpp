#include "ai/nearby/ChosenServer.h"

#include "persistence/SettingsStore.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;

void ChosenServer::use(SettingsStore &settings, const QString &address, const QString &model)
{
    settings.setProviderName(u"Model server on the local network"_s);
    settings.setBaseURLString(address);
    settings.setModel(model);
    settings.setHostedChatEnabled(false);
    Log::info(Log::Category::AIProvider, "Configured a model server on the local network"_L1);
}

} // namespace morvane
