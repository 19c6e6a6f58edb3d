#include "app/AppLock.h"

#include "app/Storage.h"
#include "app/Voice.h"
#include "audio/TextToSpeechService.h"

namespace morvane {

AppLock::AppLock(const LockPorts &ports, Storage &storage, Voice &voice, const Secrets &secrets, Clock &clock,
                 Work &work)
    : m_pause(clock)
    , passphrase(std::make_unique<PassphraseService>(PassphraseService::Parts{
          .vault = *storage.vault, .pause = m_pause, .work = work, .isSet = secrets.isKeyWrapped}))
    , service(std::make_unique<AppLockService>(AppLockService::Parts{
          .settings = *storage.settings,
          .vault = *storage.vault,
          .keychain = secrets.keychain,
          .presence = ports.presence ? *ports.presence : m_absentPresence,
          .passphrase = *passphrase,
          .pause = m_pause,
          .session = ports.session ? *ports.session : static_cast<SessionSignaling &>(m_silentSession),
          .clock = clock,
          .work = work,
          .isKeyBehindPresence = secrets.isKeyBehindPresence,
          .stopSpeech = [&speech = *voice.tts] { speech.stop(); }}))
{}

} // namespace morvane
