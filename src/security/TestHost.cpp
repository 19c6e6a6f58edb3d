#include "security/TestHost.h"

#include <QtGlobal>

bool TestHost::isActive()
{
    return qEnvironmentVariableIsSet("XCTestConfigurationFilePath") ||
           qEnvironmentVariableIsSet("XCTestBundlePath");
}
