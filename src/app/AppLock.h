#pragma once

#include "security/AbsentKeyring.h"
#include "services/AnswerPause.h"
#include "services/AppLockService.h"
#include "services/PassphraseService.h"

#include <memory>

namespace morvane {

class Clock;
class Work;
struct Secrets;
struct Storage;
struct Voice;

// What the lock asks of the desktop; without it nothing can be asked and nothing is heard.
struct LockPorts {
    UserPresenceConfirming *presence = nullptr;
    SessionSignaling *session = nullptr;
};

// The application lock. What the constructor takes outlives this.
struct AppLock {
    AppLock(const LockPorts &ports, Storage &storage, Voice &voice, const Secrets &secrets, Clock &clock,
            Work &work);

private:
    class SilentSession final : public SessionSignaling {
    public:
        void startWatching() override {}
        void stopWatching() override {}
        void askIdleTime() override {}
        [[nodiscard]] Absence absence() const override { return {}; }
    };

    AbsentPresence m_absentPresence;
    SilentSession m_silentSession;
    AnswerPause m_pause;

public:
    const std::unique_ptr<PassphraseService> passphrase;
    const std::unique_ptr<AppLockService> service;
};

} // namespace morvane
