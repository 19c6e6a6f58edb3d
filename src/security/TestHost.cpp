#include "security/TestHost.h"

#include <QtGlobal>

namespace morvane {

bool TestHost::isActive()
{
    return qEnvironmentVariableIsSet("XCTestConfigurationFilePath") ||
           qEnvironmentVariableIsSet("XCTestBundlePath");
}

} // namespace morvane
