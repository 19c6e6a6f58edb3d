#include "persistence/PersistenceController.h"
