#include "platform/linux/KeySymbols.h"

#include <QChar>

#include <array>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array named{std::pair{Qt::Key_Escape, XKB_KEY_Escape},
                           std::pair{Qt::Key_Tab, XKB_KEY_Tab},
                           std::pair{Qt::Key_Backtab, XKB_KEY_ISO_Left_Tab},
                           std::pair{Qt::Key_Backspace, XKB_KEY_BackSpace},
                           std::pair{Qt::Key_Return, XKB_KEY_Return},
                           std::pair{Qt::Key_Enter, XKB_KEY_KP_Enter},
                           std::pair{Qt::Key_Insert, XKB_KEY_Insert},
                           std::pair{Qt::Key_Delete, XKB_KEY_Delete},
                           std::pair{Qt::Key_Pause, XKB_KEY_Pause},
                           std::pair{Qt::Key_Print, XKB_KEY_Print},
                           std::pair{Qt::Key_SysReq, XKB_KEY_Sys_Req},
                           std::pair{Qt::Key_Home, XKB_KEY_Home},
                           std::pair{Qt::Key_End, XKB_KEY_End},
                           std::pair{Qt::Key_Left, XKB_KEY_Left},
                           std::pair{Qt::Key_Up, XKB_KEY_Up},
                           std::pair{Qt::Key_Right, XKB_KEY_Right},
                           std::pair{Qt::Key_Down, XKB_KEY_Down},
                           std::pair{Qt::Key_PageUp, XKB_KEY_Prior},
                           std::pair{Qt::Key_PageDown, XKB_KEY_Next},
                           std::pair{Qt::Key_Menu, XKB_KEY_Menu},
                           std::pair{Qt::Key_Help, XKB_KEY_Help},
                           std::pair{Qt::Key_MicMute, XKB_KEY_XF86AudioMicMute},
                           std::pair{Qt::Key_MediaPlay, XKB_KEY_XF86AudioPlay},
                           std::pair{Qt::Key_MediaStop, XKB_KEY_XF86AudioStop},
                           std::pair{Qt::Key_MediaPrevious, XKB_KEY_XF86AudioPrev},
                           std::pair{Qt::Key_MediaNext, XKB_KEY_XF86AudioNext},
                           std::pair{Qt::Key_MediaRecord, XKB_KEY_XF86AudioRecord},
                           std::pair{Qt::Key_HomePage, XKB_KEY_XF86HomePage},
                           std::pair{Qt::Key_LaunchMail, XKB_KEY_XF86Mail},
                           std::pair{Qt::Key_Search, XKB_KEY_XF86Search}};

} // namespace

std::uint32_t KeySymbols::of(Qt::Key key)
{
    for (const auto &[each, symbol] : named) {
        if (each == key)
            return std::uint32_t(symbol);
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return std::uint32_t(XKB_KEY_F1 + (key - Qt::Key_F1));
    if (key < Qt::Key_Space || key >= Qt::Key_Escape)
        return 0;
    return xkb_utf32_to_keysym(QChar::toLower(char32_t(key))); // the other keys are what they write
}

QString KeySymbols::trigger(QKeyCombination keys)
{
    std::array<char, 64> name{};
    const std::uint32_t symbol = of(keys.key());
    if (symbol == 0 || xkb_keysym_get_name(symbol, name.data(), name.size()) <= 0)
        return {};
    constexpr std::array modifiers{std::pair{Qt::ControlModifier, "CTRL+"},
                                   std::pair{Qt::AltModifier, "ALT+"}, std::pair{Qt::ShiftModifier, "SHIFT+"},
                                   std::pair{Qt::MetaModifier, "LOGO+"}};
    QString trigger;
    for (const auto &[modifier, word] : modifiers) {
        if (keys.keyboardModifiers() & modifier)
            trigger += QLatin1StringView(word);
    }
    return trigger + QString::fromLatin1(name.data());
}

} // namespace morvane
