#include "utils/files/SupportFolders.h"

#include <QStandardPaths>

namespace morvane {

SupportFolders SupportFolders::standard()
{
    using Paths = QStandardPaths;
    auto runtime = Paths::writableLocation(Paths::RuntimeLocation);
    if (runtime.isEmpty())
        runtime = Paths::writableLocation(Paths::GenericCacheLocation);
    return {Paths::writableLocation(Paths::GenericDataLocation),
            Paths::writableLocation(Paths::GenericConfigLocation), runtime};
}

SupportFolders SupportFolders::inProfile(const QString &folder)
{
    return {folder + QStringLiteral("/data"), folder + QStringLiteral("/config"),
            folder + QStringLiteral("/run")};
}

} // namespace morvane
