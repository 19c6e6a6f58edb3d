#include "utils/files/SupportFolders.h"

#include <QDir>
#include <QStandardPaths>

namespace morvane {

namespace {

// Qt learned of this folder in 6.7. A relative path in the variable counts as none.
QString stateFolder()
{
    const QString given = qEnvironmentVariable("XDG_STATE_HOME");
    return QDir::isAbsolutePath(given) ? QDir::cleanPath(given)
                                       : QDir::homePath() + QStringLiteral("/.local/state");
}

} // namespace

SupportFolders SupportFolders::standard()
{
    using Paths = QStandardPaths;
    auto runtime = Paths::writableLocation(Paths::RuntimeLocation);
    if (runtime.isEmpty())
        runtime = Paths::writableLocation(Paths::GenericCacheLocation);
    return {Paths::writableLocation(Paths::GenericDataLocation),
            Paths::writableLocation(Paths::GenericConfigLocation), runtime, stateFolder()};
}

SupportFolders SupportFolders::inProfile(const QString &folder)
{
    return {folder + QStringLiteral("/data"), folder + QStringLiteral("/config"),
            folder + QStringLiteral("/run"), folder + QStringLiteral("/state")};
}

} // namespace morvane
