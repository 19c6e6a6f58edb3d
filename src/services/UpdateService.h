#pragma once

#include <QString>

namespace morvane {

// Who brings new versions of the program. It never looks for them itself: that is for the package manager it
// came by, if it did.
namespace UpdateService {

struct Origin {
    enum class Kind { package, sandbox, ownBuild };
    Kind kind = Kind::ownBuild;
    QString package = {}; // of a package

    bool operator==(const Origin &) const = default;
};

// Asks the package database of the machine whose file `program` is; where none answers, it is nobody's. Waits
// for another process, so that it belongs on a thread of Work.
[[nodiscard]] Origin originOf(const QString &program);

// What the person reads of it.
[[nodiscard]] QString words(const Origin &origin);

} // namespace UpdateService

} // namespace morvane
