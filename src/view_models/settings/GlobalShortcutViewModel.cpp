#include "view_models/settings/GlobalShortcutViewModel.h"

#include "services/GlobalShortcutService.h"
#include "services/ShortcutKeys.h"

#include <array>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using State = GlobalShortcutBinding::State;

namespace {

constexpr std::array offered{ShortcutPreset::optionSpace,       ShortcutPreset::controlSpace,
                             ShortcutPreset::commandShiftSpace, ShortcutPreset::optionC,
                             ShortcutPreset::optionV,           ShortcutPreset::functionF13,
                             ShortcutPreset::disabled};

bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return true;
    default:
        return false;
    }
}

} // namespace

GlobalShortcutViewModel::GlobalShortcutViewModel(GlobalShortcut shortcut, GlobalShortcutService &service,
                                                 QString desktop, QObject *parent)
    : QObject(parent)
    , m_shortcut(shortcut)
    , m_service(service)
    , m_desktop(std::move(desktop))
{
    connect(&service, &GlobalShortcutService::changed, this, &GlobalShortcutViewModel::changed);
}

QString GlobalShortcutViewModel::chosen() const
{
    const auto keys = m_service.chosen(m_shortcut);
    return keys ? ShortcutKeys::text(*keys) : QString();
}

QString GlobalShortcutViewModel::bound() const
{
    const auto binding = m_service.binding(m_shortcut);
    return binding.state == State::bound ? binding.keys : QString();
}

QString GlobalShortcutViewModel::note() const
{
    if (!m_refusal.isEmpty())
        return m_refusal;
    if (m_isRecording)
        return u"Press the keys. Esc leaves them as they are, Backspace takes none."_s;
    return problem();
}

// A key to talk with still works in the window itself.
QString GlobalShortcutViewModel::problem() const
{
    const auto binding = m_service.binding(m_shortcut);
    if (binding.state == State::off || binding.state == State::waiting)
        return {};
    if (binding.state == State::bound)
        return binding.keys == chosen() || !isChosenByDesktop()
                   ? QString()
                   : u"As your desktop's own settings have it."_s;
    const QString scope = m_shortcut == GlobalShortcut::talk
                              ? u"%1 works only while the window is in front: "_s
                              : u"%1 is not bound: "_s;
    return scope.arg(chosen()) + why(binding.state);
}

QString GlobalShortcutViewModel::why(State state) const
{
    switch (state) {
    case State::off:
    case State::waiting:
    case State::bound:
        break;
    case State::taken:
        return u"another app may already use it."_s;
    case State::refused:
        return isChosenByDesktop() ? u"your desktop gave it no key."_s : u"this keyboard has no such key."_s;
    case State::unavailable:
        return u"%1 gives programs no keys of their own. In its settings you can let a key run “morvane”, "
               u"which "
               u"shows the window."_s.arg(m_desktop.isEmpty() ? u"this desktop"_s : m_desktop);
    }
    return {};
}

bool GlobalShortcutViewModel::isChosenByDesktop() const
{
    return m_service.isChosenByDesktop();
}

bool GlobalShortcutViewModel::canShowDesktopSettings() const
{
    return m_service.canShowDesktopSettings();
}

void GlobalShortcutViewModel::showDesktopSettings()
{
    m_service.showDesktopSettings();
}

QStringList GlobalShortcutViewModel::presets() const
{
    QStringList texts;
    for (const ShortcutPreset preset : offered) {
        const auto keys = ShortcutKeys::of(preset);
        texts += keys ? ShortcutKeys::text(*keys) : u"None"_s;
    }
    return texts;
}

void GlobalShortcutViewModel::choosePreset(int index)
{
    stopRecording();
    if (index < 0 || index >= int(offered.size()))
        return;
    const auto keys = ShortcutKeys::of(offered.at(std::size_t(index)));
    m_service.choose(m_shortcut, keys);
}

void GlobalShortcutViewModel::record()
{
    if (std::exchange(m_isRecording, true))
        return;
    m_service.setPaused(true);
    Q_EMIT changed();
}

void GlobalShortcutViewModel::stopRecording()
{
    m_refusal.clear();
    if (!std::exchange(m_isRecording, false))
        return;
    m_service.setPaused(false);
    Q_EMIT changed();
}

void GlobalShortcutViewModel::press(int key, int modifiers)
{
    const QKeyCombination keys(Qt::KeyboardModifiers(modifiers) & ~Qt::KeypadModifier, Qt::Key(key));
    if (!m_isRecording || isModifier(key))
        return;
    const bool isAlone = keys.keyboardModifiers() == Qt::NoModifier;
    if (isAlone && key == Qt::Key_Escape)
        return stopRecording();
    const GlobalShortcut other =
        m_shortcut == GlobalShortcut::chat ? GlobalShortcut::talk : GlobalShortcut::chat;
    if (isAlone && key == Qt::Key_Backspace)
        m_service.choose(m_shortcut, std::nullopt);
    else if (!ShortcutKeys::mayBeGlobal(keys))
        return refuse(u"Hold Ctrl, Alt or the logo key with it."_s);
    else if (m_service.chosen(other) == keys)
        return refuse(other == GlobalShortcut::talk
                          ? u"%1 is the key to talk."_s.arg(ShortcutKeys::text(keys))
                          : u"%1 shows the window."_s.arg(ShortcutKeys::text(keys)));
    else
        m_service.choose(m_shortcut, keys);
    stopRecording();
}

void GlobalShortcutViewModel::refuse(const QString &why)
{
    m_refusal = why;
    Q_EMIT changed();
}

} // namespace morvane
