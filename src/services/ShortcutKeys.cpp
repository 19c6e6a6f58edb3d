#include "services/ShortcutKeys.h"

#include <QKeySequence>

#include <array>
#include <utility>

namespace morvane {

namespace {

constexpr std::array presets{
    std::pair{ShortcutPreset::optionSpace, Qt::AltModifier | Qt::Key_Space},
    std::pair{ShortcutPreset::controlSpace, Qt::ControlModifier | Qt::Key_Space},
    std::pair{ShortcutPreset::commandShiftSpace, Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_Space},
    std::pair{ShortcutPreset::optionC, Qt::AltModifier | Qt::Key_C},
    std::pair{ShortcutPreset::optionV, Qt::AltModifier | Qt::Key_V},
    std::pair{ShortcutPreset::functionF13, QKeyCombination(Qt::Key_F13)}};

constexpr auto carrying = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
constexpr auto known = carrying | Qt::ShiftModifier;

bool isModifier(Qt::Key key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
        return true;
    default:
        return false;
    }
}

// Those that do nothing of their own in a text or a list.
bool standsAlone(Qt::Key key)
{
    return (key >= Qt::Key_F1 && key <= Qt::Key_F35) || key == Qt::Key_Pause || key == Qt::Key_Print ||
           key == Qt::Key_SysReq || (key >= Qt::Key_Back && key < Qt::Key_Multi_key);
}

} // namespace

std::optional<QKeyCombination> ShortcutKeys::of(ShortcutPreset preset)
{
    for (const auto &[each, keys] : presets) {
        if (each == preset)
            return keys;
    }
    return std::nullopt;
}

std::optional<ShortcutPreset> ShortcutKeys::preset(QKeyCombination keys)
{
    for (const auto &[each, itsKeys] : presets) {
        if (itsKeys == keys)
            return each;
    }
    return std::nullopt;
}

QString ShortcutKeys::text(QKeyCombination keys)
{
    return QKeySequence(keys).toString(QKeySequence::PortableText);
}

std::optional<QKeyCombination> ShortcutKeys::fromText(const QString &text)
{
    const auto sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (sequence.count() != 1 || !mayBeGlobal(sequence[0]))
        return std::nullopt;
    return sequence[0];
}

bool ShortcutKeys::mayBeGlobal(QKeyCombination keys)
{
    const Qt::Key key = keys.key();
    if (key == Qt::Key_unknown || key == 0 || isModifier(key) || (keys.keyboardModifiers() & ~known) != 0)
        return false;
    return standsAlone(key) || (keys.keyboardModifiers() & carrying) != 0;
}

} // namespace morvane
