#include "ai/local/SetupPlan.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString SetupPlan::installCommand()
{
    return u"curl -fsSL https://ollama.com/install.sh | sh"_s;
}

} // namespace morvane
