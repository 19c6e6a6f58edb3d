#include "persistence/DatabaseError.h"

#include <sqlite3.h>

namespace morvane {

namespace {

int primary(int code)
{
    return code & 0xff; // an extended code stands above its primary one
}

} // namespace

bool DatabaseError::isDamage() const
{
    return primary(m_code) == SQLITE_CORRUPT || primary(m_code) == SQLITE_NOTADB;
}

bool DatabaseError::isHeldElsewhere() const
{
    return primary(m_code) == SQLITE_BUSY || primary(m_code) == SQLITE_LOCKED;
}

} // namespace morvane
