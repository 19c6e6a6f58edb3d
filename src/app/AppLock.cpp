#include "app/AppLock.h"

#include "app/Storage.h"
#include "app/Voice.h"
#include "audio/TextToSpeechService.h"

namespace morvane {

AppLock::AppLock(const LockPorts &ports, Storage &storage, Voice &voice, const Secrets &secrets, Clock &clock,
                 Work &work)
    : service(std::make_unique<AppLockService>(AppLockService::Parts{
          .settings = *storage.settings,
          .vault = *storage.vault,
          .keychain = secrets.keychain,
          .presence = ports.presence ? *ports.presence : m_absentPresence,
          .session = ports.session ? *ports.session : static_cast<SessionSignaling &>(m_silentSession),
          .clock = clock,
          .work = work,
          .stopSpeech = [&speech = *voice.tts] { speech.stop(); }}))
{}

} // namespace morvane
