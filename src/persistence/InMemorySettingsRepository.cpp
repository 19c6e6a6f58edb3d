#include "persistence/InMemorySettingsRepository.h"
