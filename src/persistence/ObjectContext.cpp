#include "persistence/ObjectContext.h"
