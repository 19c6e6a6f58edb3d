#include "support/FileSpy.h"

// Preloaded into the program, kills it at the MORVANE_KILL_AT'th rename or sync in MORVANE_KILL_FOLDER, or at
// that call of the kinds that MORVANE_KILL_VERBS names.

namespace morvane {

namespace {

class KillAtCall {
public:
    KillAtCall()
        : m_spy(qEnvironmentVariable("MORVANE_KILL_FOLDER"))
    {
        m_spy.killAt(qEnvironmentVariableIntValue("MORVANE_KILL_AT"),
                     qEnvironmentVariable("MORVANE_KILL_VERBS", QStringLiteral("rename sync")).split(u' '));
    }

private:
    FileSpy m_spy;
};

const KillAtCall killAtCall;

} // namespace

} // namespace morvane
