#include "ai/routing/KeyOrigin.h"

#include "ai/contract/BaseURL.h"
#include "persistence/SettingsStore.h"

namespace morvane {

bool KeyOrigin::allows(const SettingsStore &settings, const QString &baseURL)
{
    const QString &origin = settings.apiKeyOrigin();
    return !origin.isEmpty() && BaseURL::origin(baseURL) == origin;
}

bool KeyOrigin::allows(const SettingsStore &settings)
{
    return allows(settings, settings.baseURLString());
}

void KeyOrigin::adopt(SettingsStore &settings)
{
    if (settings.apiKeyOrigin().isEmpty())
        settings.setApiKeyOrigin(BaseURL::origin(settings.baseURLString()));
}

} // namespace morvane
