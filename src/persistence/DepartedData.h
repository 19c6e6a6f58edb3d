#pragma once

#include "persistence/SettingsRepository.h"
#include "utils/files/SupportFolders.h"

#include <QLatin1StringView>

#include <span>

namespace morvane {

// What pages and tools that have left the application kept in its support folder. Each removal runs once; one
// that fails is logged and not tried again. Nothing here throws.
namespace DepartedData {

inline constexpr QLatin1StringView codingEngineFlagKey{"didRemoveExternalCodingEngineData.v1"};
inline constexpr QLatin1StringView modulesFlagKey{"didRemoveDepartedModuleData.v1"};

void removeCodingEngineOnce(const SupportFolders &folders, SettingsRepository &defaults);

// Files only: what Telegram downloaded and the pictures of Studio are folders, and stay.
void removeModulesOnce(const SupportFolders &folders, SettingsRepository &defaults);

// The departed modules' files: those of exactly these names, and those whose names start so.
[[nodiscard]] std::span<const QLatin1StringView> moduleFiles();
[[nodiscard]] std::span<const QLatin1StringView> moduleFilePrefixes();

} // namespace DepartedData

} // namespace morvane
