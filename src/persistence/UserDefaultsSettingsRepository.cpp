#include "persistence/UserDefaultsSettingsRepository.h"
