#include "support/FileSpy.h"

#include <QCoreApplication>

#include <optional>

// Preloaded into the program, kills it at the MORVANE_KILL_AT'th call in MORVANE_KILL_FOLDER of the kinds
// that MORVANE_KILL_VERBS names.

namespace morvane {

namespace {

class KillAtCall {
public:
    KillAtCall()
    {
        spy.emplace(qEnvironmentVariable("MORVANE_KILL_FOLDER"));
        spy->killAt(qEnvironmentVariableIntValue("MORVANE_KILL_AT"),
                    qEnvironmentVariable("MORVANE_KILL_VERBS").split(u' '));
        // Libraries write to their pipes while the process exits, when Qt can name no file any more.
        qAddPostRoutine([] { spy.reset(); });
    }

private:
    static inline std::optional<FileSpy> spy;
};

const KillAtCall killAtCall;

} // namespace

} // namespace morvane
