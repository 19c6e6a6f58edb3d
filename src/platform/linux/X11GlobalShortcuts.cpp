#include "platform/linux/X11GlobalShortcuts.h"

#include "platform/linux/KeySymbols.h"
#include "platform/linux/X11Windows.h"
#include "services/ShortcutKeys.h"

#include <QSocketNotifier>
#include <QTimerEvent>

#include <algorithm>
#include <array>
#include <utility>
#include <xcb/xcb_keysyms.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint8_t isSent = 0x80; // by another program; such an event is no key

template <typename T>
std::vector<T> untilZero(const T *first)
{
    std::vector<T> values;
    for (; first && *first != 0; ++first)
        values.push_back(*first);
    return values;
}

} // namespace

struct X11GlobalShortcuts::Server {
    explicit Server(const QByteArray &display)
        : connection(xcb_connect(display.isEmpty() ? nullptr : display.constData(), nullptr))
    {
        if (!isThere())
            return;
        for (auto each = xcb_setup_roots_iterator(xcb_get_setup(connection.get())); each.rem > 0;
             xcb_screen_next(&each))
            roots.push_back(each.data->root);
        symbols.reset(xcb_key_symbols_alloc(connection.get()));
        learnModifiers();
    }

    [[nodiscard]] bool isThere() const { return xcb_connection_has_error(connection.get()) == 0; }

    [[nodiscard]] std::vector<xcb_keycode_t> codesOf(std::uint32_t symbol) const
    {
        const X11Windows::Reply<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols.get(), symbol));
        return untilZero(codes.get());
    }

    void learnModifiers()
    {
        const auto map = X11Windows::replyTo(&xcb_get_modifier_mapping_reply, connection.get(),
                                             xcb_get_modifier_mapping(connection.get()));
        if (!map)
            return;
        const xcb_keycode_t *first = xcb_get_modifier_mapping_keycodes(map.get());
        modifierCodes.assign(first, first + xcb_get_modifier_mapping_keycodes_length(map.get()));
        const auto maskOf = [&](std::uint32_t symbol) {
            for (const xcb_keycode_t code : codesOf(symbol)) {
                const auto found = std::find(modifierCodes.begin(), modifierCodes.end(), code);
                if (found != modifierCodes.end() && map->keycodes_per_modifier > 0)
                    return std::uint16_t(1U
                                         << ((found - modifierCodes.begin()) / map->keycodes_per_modifier));
            }
            return std::uint16_t{0};
        };
        alt = maskOf(XKB_KEY_Alt_L);
        meta = maskOf(XKB_KEY_Super_L);
        // A grab says the whole state of the keyboard, so it is made once for each way the locks can stand.
        locks = {0};
        for (const std::uint16_t lock :
             {std::uint16_t(XCB_MOD_MASK_LOCK), maskOf(XKB_KEY_Num_Lock), maskOf(XKB_KEY_Scroll_Lock)}) {
            for (std::size_t i = 0, count = lock == 0 ? 0 : locks.size(); i < count; ++i)
                locks.push_back(locks[i] | lock);
        }
    }

    // None for a modifier that this keyboard hasn't.
    [[nodiscard]] std::optional<std::uint16_t> modifiersOf(QKeyCombination keys) const
    {
        const std::array known{std::pair{Qt::ShiftModifier, std::uint16_t(XCB_MOD_MASK_SHIFT)},
                               std::pair{Qt::ControlModifier, std::uint16_t(XCB_MOD_MASK_CONTROL)},
                               std::pair{Qt::AltModifier, alt}, std::pair{Qt::MetaModifier, meta}};
        std::uint16_t modifiers = 0;
        for (const auto &[modifier, mask] : known) {
            if (!(keys.keyboardModifiers() & modifier))
                continue;
            if (mask == 0)
                return std::nullopt;
            modifiers |= mask;
        }
        return modifiers;
    }

    struct FreeSymbols {
        void operator()(xcb_key_symbols_t *symbols) const { xcb_key_symbols_free(symbols); }
    };

    X11Windows::Connection connection;
    std::vector<xcb_window_t> roots;
    std::unique_ptr<xcb_key_symbols_t, FreeSymbols> symbols;
    std::vector<xcb_keycode_t> modifierCodes;
    std::uint16_t alt = 0;
    std::uint16_t meta = 0;
    std::vector<std::uint16_t> locks;
    std::unique_ptr<QSocketNotifier> notifier;
};

X11GlobalShortcuts::X11GlobalShortcuts(QByteArray display, QObject *parent)
    : GlobalShortcutBinding(parent)
    , m_display(std::move(display))
{}

X11GlobalShortcuts::~X11GlobalShortcuts() = default;

void X11GlobalShortcuts::bind(const std::vector<Wish> &wishes)
{
    release();
    for (const Wish &wish : wishes)
        m_grabs.push_back({wish});
    if (!wishes.empty() && connectToServer())
        grabAll();
    Q_EMIT changed();
}

// The grabs go with the connection.
void X11GlobalShortcuts::release()
{
    letGo();
    m_server.reset();
    m_grabs.clear();
}

GlobalShortcutBinding::Binding X11GlobalShortcuts::binding(GlobalShortcut shortcut) const
{
    for (const Grab &each : m_grabs) {
        if (each.wish.shortcut == shortcut)
            return {each.state, each.state == State::bound ? ShortcutKeys::text(each.wish.keys) : QString()};
    }
    return {};
}

bool X11GlobalShortcuts::connectToServer()
{
    m_server = std::make_unique<Server>(m_display);
    if (!m_server->isThere()) {
        serverLeft();
        return false;
    }
    m_server->notifier = std::make_unique<QSocketNotifier>(
        xcb_get_file_descriptor(m_server->connection.get()), QSocketNotifier::Read);
    connect(m_server->notifier.get(), &QSocketNotifier::activated, this, &X11GlobalShortcuts::hear);
    return true;
}

void X11GlobalShortcuts::grabAll()
{
    for (Grab &each : m_grabs)
        grab(each);
    // What came while the server was asked is read already, and no socket tells of it any more.
    QMetaObject::invokeMethod(this, &X11GlobalShortcuts::hear, Qt::QueuedConnection);
}

void X11GlobalShortcuts::grab(Grab &grab)
{
    xcb_connection_t *const server = m_server->connection.get();
    const auto modifiers = m_server->modifiersOf(grab.wish.keys);
    grab.codes = m_server->codesOf(KeySymbols::of(grab.wish.keys.key()));
    grab.modifiers = modifiers.value_or(0);
    if (!modifiers)
        grab.codes.clear();
    std::vector<xcb_void_cookie_t> asked;
    for (const xcb_window_t root : m_server->roots) {
        for (const xcb_keycode_t code : grab.codes) {
            for (const std::uint16_t lock : m_server->locks)
                asked.push_back(xcb_grab_key_checked(server, 0, root, grab.modifiers | lock, code,
                                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        }
    }
    bool isOurs = !asked.empty(); // no key of this keyboard writes it
    for (const xcb_void_cookie_t &one : asked) {
        if (const X11Windows::Reply<xcb_generic_error_t> error(xcb_request_check(server, one)); error)
            isOurs = false;
    }
    grab.state = isOurs ? State::bound : asked.empty() ? State::refused : State::taken;
    if (!isOurs)
        ungrab(grab); // half of it would work with one lock and not with another
}

void X11GlobalShortcuts::ungrab(const Grab &grab)
{
    xcb_connection_t *const server = m_server->connection.get();
    for (const xcb_window_t root : m_server->roots) {
        for (const xcb_keycode_t code : grab.codes) {
            for (const std::uint16_t lock : m_server->locks)
                xcb_ungrab_key(server, code, root, grab.modifiers | lock);
        }
    }
    xcb_flush(server);
}

void X11GlobalShortcuts::hear()
{
    if (!m_server)
        return;
    xcb_connection_t *const server = m_server->connection.get();
    bool isMapNew = false;
    while (m_server && m_server->connection.get() == server) { // who hears of a key may wish for others
        const X11Windows::Reply<xcb_generic_event_t> event(xcb_poll_for_event(server));
        if (!event)
            break;
        const auto *const key = reinterpret_cast<const xcb_key_press_event_t *>(event.get());
        switch (event->response_type & ~isSent) {
        case XCB_KEY_PRESS:
            if (!(event->response_type & isSent))
                keyWentDown(key->detail, key->state, key->time);
            break;
        case XCB_KEY_RELEASE:
            if (!(event->response_type & isSent))
                keyCameUp(key->detail);
            break;
        case XCB_MAPPING_NOTIFY: {
            auto *const map = reinterpret_cast<xcb_mapping_notify_event_t *>(event.get());
            xcb_refresh_keyboard_mapping(m_server->symbols.get(), map);
            isMapNew = isMapNew || map->request != XCB_MAPPING_POINTER;
            break;
        }
        default:
            break;
        }
    }
    if (!m_server || m_server->connection.get() != server)
        return;
    if (!m_server->isThere())
        return serverLeft();
    if (!isMapNew)
        return;
    for (const Grab &each : m_grabs)
        ungrab(each);
    m_server->learnModifiers();
    grabAll();
    Q_EMIT changed();
}

void X11GlobalShortcuts::keyWentDown(std::uint8_t code, std::uint16_t modifiers, std::uint32_t time)
{
    if (m_held && m_held->code != code && m_cameUp.isActive())
        letGo();
    if (m_held) {
        if (m_held->code == code)
            m_cameUp.stop(); // it repeats
        else if (const auto esc = m_server->codesOf(XKB_KEY_Escape);
                 std::find(esc.begin(), esc.end(), code) != esc.end())
            Q_EMIT escaped(m_held->shortcut);
        return;
    }
    const std::uint16_t told =
        modifiers & (XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | m_server->alt | m_server->meta);
    for (const Grab &each : m_grabs) {
        if (each.state != State::bound || each.modifiers != told ||
            std::find(each.codes.begin(), each.codes.end(), code) == each.codes.end())
            continue;
        m_held = {each.wish.shortcut, code};
        // What a window manager reads the moment of the press from.
        Q_EMIT pressed(each.wish.shortcut, u"morvane_TIME%1"_s.arg(time));
        return;
    }
}

// Until the key itself comes up the server tells of all keys, so also of a modifier that comes up first.
void X11GlobalShortcuts::keyCameUp(std::uint8_t code)
{
    const auto &modifiers = m_server->modifierCodes;
    if (!m_held)
        return;
    if (m_held->code == code)
        m_cameUp.start(repeatPause, this);
    else if (std::find(modifiers.begin(), modifiers.end(), code) != modifiers.end())
        letGo();
}

void X11GlobalShortcuts::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_cameUp.timerId())
        letGo();
}

void X11GlobalShortcuts::letGo()
{
    m_cameUp.stop();
    if (const auto held = std::exchange(m_held, std::nullopt))
        Q_EMIT released(held->shortcut);
}

void X11GlobalShortcuts::serverLeft()
{
    letGo();
    m_server.reset();
    for (Grab &each : m_grabs)
        each.state = State::unavailable;
    Q_EMIT changed();
}

} // namespace morvane
