#include "services/GlobalShortcutService.h"

#include "persistence/SettingsStore.h"
#include "services/ShortcutKeys.h"
#include "utils/log/Log.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using State = GlobalShortcutBinding::State;

namespace {

constexpr std::array all{GlobalShortcut::chat, GlobalShortcut::talk};

QString purpose(GlobalShortcut shortcut)
{
    switch (shortcut) {
    case GlobalShortcut::chat:
        return u"Show the window"_s;
    case GlobalShortcut::talk:
        return u"Hold to talk"_s;
    }
    return {};
}

} // namespace

GlobalShortcutService::GlobalShortcutService(SettingsStore &settings, GlobalShortcutBinding *desktop,
                                             QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_desktop(desktop)
{
    for (const auto signal :
         {&SettingsStore::chatShortcutChanged, &SettingsStore::chatShortcutKeysChanged,
          &SettingsStore::pushToTalkShortcutChanged, &SettingsStore::pushToTalkShortcutKeysChanged}) {
        connect(&settings, signal, this, &GlobalShortcutService::bind);
        connect(&settings, signal, this, &GlobalShortcutService::changed);
    }
    if (!desktop)
        return;
    connect(desktop, &GlobalShortcutBinding::changed, this, &GlobalShortcutService::tellTaken);
    connect(desktop, &GlobalShortcutBinding::changed, this, &GlobalShortcutService::changed);
    connect(desktop, &GlobalShortcutBinding::pressed, this, &GlobalShortcutService::pressed);
    connect(desktop, &GlobalShortcutBinding::released, this, &GlobalShortcutService::released);
    connect(desktop, &GlobalShortcutBinding::escaped, this, &GlobalShortcutService::escaped);
}

void GlobalShortcutService::registerShortcuts()
{
    m_isRegistered = true;
    bind();
}

void GlobalShortcutService::unregisterShortcuts()
{
    if (std::exchange(m_isRegistered, false) && m_desktop)
        m_desktop->release();
}

void GlobalShortcutService::setPaused(bool paused)
{
    if (std::exchange(m_isPaused, paused) == paused || !m_isRegistered || !m_desktop)
        return;
    if (paused)
        m_desktop->release();
    else
        bind();
}

void GlobalShortcutService::bind()
{
    if (!m_isRegistered || m_isPaused || !m_desktop)
        return;
    std::vector<GlobalShortcutBinding::Wish> wishes;
    for (const GlobalShortcut shortcut : all) {
        const auto keys = chosen(shortcut);
        const bool isFirst = wishes.empty() || wishes.front().keys != keys; // one key can't do both
        if (keys && isFirst)
            wishes.push_back({shortcut, *keys, purpose(shortcut)});
    }
    m_desktop->bind(wishes);
    tellTaken();
}

void GlobalShortcutService::tellTaken()
{
    for (const GlobalShortcut shortcut : all) {
        QString &told = m_told.at(static_cast<std::size_t>(shortcut));
        const auto keys = chosen(shortcut);
        const State state = m_desktop->binding(shortcut).state;
        if (!keys || state == State::bound || state == State::off) {
            told.clear();
        } else if (const QString text = ShortcutKeys::text(*keys); state == State::taken && told != text) {
            told = text;
            Log::info(Log::Category::Shortcuts, "Another program has the %{public}s shortcut"_L1, {text});
            Q_EMIT couldNotRegister(text);
        }
    }
}

std::optional<QKeyCombination> GlobalShortcutService::chosen(GlobalShortcut shortcut) const
{
    const bool isChat = shortcut == GlobalShortcut::chat;
    const auto recorded =
        ShortcutKeys::fromText(isChat ? m_settings.chatShortcutKeys() : m_settings.pushToTalkShortcutKeys());
    if (recorded)
        return recorded;
    return ShortcutKeys::of(isChat ? m_settings.chatShortcut() : m_settings.pushToTalkShortcut());
}

// A combination that a preset stands for is stored as that, and before a recorded one goes: nothing between
// the former and the new is ever wished for.
void GlobalShortcutService::choose(GlobalShortcut shortcut, std::optional<QKeyCombination> keys)
{
    const auto preset = keys ? ShortcutKeys::preset(*keys) : ShortcutPreset::disabled;
    const QString recorded = preset ? QString() : ShortcutKeys::text(*keys);
    if (shortcut == GlobalShortcut::chat) {
        if (preset)
            m_settings.setChatShortcut(*preset);
        m_settings.setChatShortcutKeys(recorded);
    } else {
        if (preset)
            m_settings.setPushToTalkShortcut(*preset);
        m_settings.setPushToTalkShortcutKeys(recorded);
    }
}

GlobalShortcutService::Binding GlobalShortcutService::binding(GlobalShortcut shortcut) const
{
    const auto keys = chosen(shortcut);
    if (!keys)
        return {};
    if (!m_desktop)
        return {State::unavailable};
    if (shortcut == GlobalShortcut::talk && keys == chosen(GlobalShortcut::chat))
        return {State::taken};
    return m_desktop->binding(shortcut);
}

bool GlobalShortcutService::isChosenByDesktop() const
{
    return m_desktop && m_desktop->isChosenByDesktop();
}

bool GlobalShortcutService::canShowDesktopSettings() const
{
    return m_desktop && m_desktop->canShowDesktopSettings();
}

void GlobalShortcutService::showDesktopSettings()
{
    if (m_desktop)
        m_desktop->showDesktopSettings();
}

} // namespace morvane
