#include "persistence/ConversationRepository.h"
