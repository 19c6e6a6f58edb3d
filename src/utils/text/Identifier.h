#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

namespace Identifier {

// Upper case with hyphens and no braces: how ids are printed, stored and compared as text.
[[nodiscard]] inline QString text(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

} // namespace Identifier

} // namespace morvane
