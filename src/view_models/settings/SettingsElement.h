#pragma once

#include "persistence/SettingsStore.h"

#include <QtQml/qqml.h>

namespace morvane {

// Offers the settings to QML, of which their own room knows nothing.
struct SettingsElement {
    Q_GADGET
    QML_FOREIGN(morvane::SettingsStore)
    QML_NAMED_ELEMENT(SettingsStore)
    QML_UNCREATABLE("made by the application")
};

} // namespace morvane
