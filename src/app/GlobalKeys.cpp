#include "app/GlobalKeys.h"

#include "app/Presentation.h"
#include "app/Storage.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/WindowActivation.h"
#include "services/AppLockService.h"
#include "services/GlobalShortcutService.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/settings/GlobalShortcutViewModel.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString nameOfTheDesktop()
{
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP").section(u':', 0, 0);
}

} // namespace

GlobalKeys::GlobalKeys(GlobalShortcutBinding *desktop, Storage &storage)
    : service(std::make_unique<GlobalShortcutService>(*storage.settings, desktop))
    , chat(std::make_unique<GlobalShortcutViewModel>(GlobalShortcut::chat, *service, nameOfTheDesktop()))
    , talk(std::make_unique<GlobalShortcutViewModel>(GlobalShortcut::talk, *service, nameOfTheDesktop()))
{}

GlobalKeys::~GlobalKeys()
{
    service->disconnect(this); // what a key that goes lets go of is gone
    service->unregisterShortcuts();
}

void GlobalKeys::lead(Presentation &presentation, const AppLockService &lock, std::function<void()> show)
{
    m_presentation = &presentation;
    m_lock = &lock;
    m_show = std::move(show);
    connect(service.get(), &GlobalShortcutService::pressed, this, &GlobalKeys::press);
    connect(service.get(), &GlobalShortcutService::released, this, &GlobalKeys::release);
    connect(service.get(), &GlobalShortcutService::escaped, this, &GlobalKeys::drop);
    connect(service.get(), &GlobalShortcutService::couldNotRegister, this, &GlobalKeys::tellTaken);
}

// Nobody talks to a window that they can't see.
void GlobalKeys::press(GlobalShortcut shortcut, const QString &token)
{
    WindowActivation::offer(token);
    m_show();
    if (shortcut != GlobalShortcut::talk || m_lock->isLocked() ||
        !m_presentation->settings.onboardingComplete())
        return;
    VoiceEntry &voice = *m_presentation->chat->entries()->voice();
    m_isTalking = !voice.isRecording();
    voice.begin();
}

void GlobalKeys::release(GlobalShortcut shortcut)
{
    if (shortcut == GlobalShortcut::talk && std::exchange(m_isTalking, false))
        m_presentation->chat->entries()->voice()->end();
}

void GlobalKeys::drop(GlobalShortcut shortcut)
{
    if (shortcut == GlobalShortcut::talk && std::exchange(m_isTalking, false))
        m_presentation->chat->entries()->voice()->cancel();
}

void GlobalKeys::tellTaken(const QString &keys)
{
    const QString words = u"%1 shortcut could not be registered. Another app may already use it."_s.arg(keys);
    m_presentation->companion->say(words, 3s);
    m_presentation->chat->showNotice(
        {.message = words, .recovery = ErrorBanner::Recovery::openKeyboardSettings});
}

} // namespace morvane
