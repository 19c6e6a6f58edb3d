#pragma once

#include <QString>

namespace morvane {

class SettingsStore;

namespace ChosenServer {

// Has replies come from a model of a server nearby. `address` is a base address as it was found. The key that
// is saved stays for whom it was saved for, and so isn't sent there.
void use(SettingsStore &settings, const QString &address, const QString &model);

} // namespace ChosenServer

} // namespace morvane
