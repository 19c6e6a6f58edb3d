#include "platform/linux/PortalGlobalShortcuts.h"

#include "platform/linux/KeySymbols.h"
#include "platform/linux/PortalCall.h"
#include "utils/text/Product.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QRegularExpression>

#include <optional>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

// As the portal takes and tells one: its id, and what is said of it.
struct PortalShortcut {
    QString id;
    QVariantMap about;
};

static QDBusArgument &operator<<(QDBusArgument &to, const PortalShortcut &shortcut)
{
    to.beginStructure();
    to << shortcut.id << shortcut.about;
    to.endStructure();
    return to;
}

static const QDBusArgument &operator>>(const QDBusArgument &from, PortalShortcut &shortcut)
{
    from.beginStructure();
    from >> shortcut.id >> shortcut.about;
    from.endStructure();
    return from;
}

namespace {

const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString sessions = u"org.freedesktop.portal.Session"_s;
constexpr uint showsSettings = 2; // the version from which on the portal can
constexpr int replyMilliseconds = 5000;
// A portal that isn't told who asks keeps the keys by this name, which the person sees in the desktop's
// settings.
const QString sessionName = Product::name;

QString idOf(GlobalShortcut shortcut)
{
    return shortcut == GlobalShortcut::chat ? u"show-window"_s : u"hold-to-talk"_s;
}

std::optional<GlobalShortcut> shortcutOf(const QString &id)
{
    for (const GlobalShortcut each : {GlobalShortcut::chat, GlobalShortcut::talk}) {
        if (idOf(each) == id)
            return each;
    }
    return std::nullopt;
}

// GNOME 48 tells keys as its library writes them: <Alt>v.
QString legible(QString keys)
{
    static const QRegularExpression modifier(u"<([A-Za-z]+)>"_s);
    return keys.replace(modifier, u"\\1+"_s);
}

bool namesAny(const QVariant &shortcuts)
{
    return shortcuts.canConvert<QDBusArgument>() && !qdbus_cast<QList<PortalShortcut>>(shortcuts).isEmpty();
}

QDBusMessage callOf(const QString &interface, const QString &method, const QVariantList &arguments)
{
    auto call = QDBusMessage::createMethodCall(PortalCall::service, PortalCall::object, interface, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

PortalGlobalShortcuts::PortalGlobalShortcuts(QDBusConnection connection, QObject *parent)
    : GlobalShortcutBinding(parent)
    , m_bus(std::move(connection))
    , m_owner(m_bus, PortalCall::service)
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    const QString object = PortalCall::object;
    connect(&m_owner, &BusNameOwner::changed, this, &PortalGlobalShortcuts::portalChanged);
    // By no sender's name, which the library would wait for; each is asked of in isOfSession().
    m_bus.connect({}, object, shortcutsInterface, u"Activated"_s, this, SLOT(activated(QDBusMessage)));
    m_bus.connect({}, object, shortcutsInterface, u"Deactivated"_s, this, SLOT(deactivated(QDBusMessage)));
    m_bus.connect({}, object, shortcutsInterface, u"ShortcutsChanged"_s, this,
                  SLOT(shortcutsChanged(QDBusMessage)));
}

PortalGlobalShortcuts::~PortalGlobalShortcuts()
{
    if (!m_session.isEmpty())
        closeSession();
}

void PortalGlobalShortcuts::bind(const std::vector<Wish> &wishes)
{
    letGo();
    ++m_round;
    m_wishes = wishes;
    setAll(State::waiting);
    if (m_isIntroduced)
        renew();
    else if (!m_wishes.empty())
        introduce();
}

void PortalGlobalShortcuts::release()
{
    bind({});
}

// A portal knows a program that was not packaged for a sandbox only once it has said its name, and must be
// told before anything is asked of it. One that is too old for that finds the name out by itself.
void PortalGlobalShortcuts::introduce()
{
    const auto call = callOf(u"org.freedesktop.host.portal.Registry"_s, u"Register"_s,
                             {QString(Product::desktopId), QVariantMap()});
    auto visible = std::make_shared<ProcessPrivacy::Pause>();
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, replyMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, visible]() mutable {
        watcher->deleteLater();
        visible.reset();
        m_isIntroduced = true;
        askVersion();
        renew();
    });
}

void PortalGlobalShortcuts::askVersion()
{
    auto *watcher =
        new QDBusPendingCallWatcher(m_bus.asyncCall(callOf(u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                                           {shortcutsInterface, u"version"_s})),
                                    this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> version = *watcher;
        m_version = version.isValid() ? version.value().variant().toUInt() : 0;
        Q_EMIT changed();
    });
}

// A name is one session's at a time. What is wished for by the time that one is there or has gone is asked
// for then.
void PortalGlobalShortcuts::renew()
{
    if (m_isRenewing)
        return;
    delete m_call;
    if (m_session.isEmpty())
        return open();
    m_isRenewing = true;
    auto *watcher = new QDBusPendingCallWatcher(closeSession(), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_isRenewing = false;
        open();
    });
}

// The wishes go along for Plasma 5, which binds them here, and at the next step only opens its settings, each
// time. Later portals don't look at them.
void PortalGlobalShortcuts::open()
{
    if (m_wishes.empty())
        return;
    m_isRenewing = true;
    m_session = PortalCall::pathOf(m_bus, u"session", sessionName);
    m_call = new PortalCall(
        m_bus, shortcutsInterface, u"CreateSession"_s, {},
        {{u"session_handle_token"_s, sessionName}, {u"shortcuts"_s, wishes()}},
        [this, round = m_round](const PortalCall::Answer &answer) {
            m_isRenewing = false;
            if (answer.end == PortalCall::End::done)
                begin(answer.results, answer.portal);
            if (round != m_round)
                renew();
            else if (answer.end == PortalCall::End::done)
                bindIn(answer.results.value(u"shortcuts"_s));
            else
                setAll(answer.end == PortalCall::End::noPortal ? State::unavailable : State::refused);
        },
        this);
}

void PortalGlobalShortcuts::begin(const QVariantMap &results, const QString &portal)
{
    m_portal = portal;
    const QVariant handle = results.value(u"session_handle"_s); // a text in old portals
    m_session =
        handle.canConvert<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path() : handle.toString();
    m_bus.connect({}, m_session, sessions, u"Closed"_s, this, SLOT(sessionClosed(QDBusMessage)));
}

QVariant PortalGlobalShortcuts::wishes() const
{
    QList<PortalShortcut> wishes;
    for (const Wish &wish : m_wishes)
        wishes.append(
            {idOf(wish.shortcut), QVariantMap{{u"description"_s, wish.purpose},
                                              {u"preferred_trigger"_s, KeySymbols::trigger(wish.keys)}}});
    return QVariant::fromValue(wishes);
}

// `bound` is what the session began with. GNOME 48 answers that it failed where it has bound the keys.
void PortalGlobalShortcuts::bindIn(const QVariant &bound)
{
    if (namesAny(bound))
        return take(bound);
    const QVariantList arguments{QVariant::fromValue(QDBusObjectPath(m_session)), wishes(), QString()};
    m_call = new PortalCall(
        m_bus, shortcutsInterface, u"BindShortcuts"_s, arguments, {},
        [this](const PortalCall::Answer &answer) {
            const QVariant shortcuts = answer.results.value(u"shortcuts"_s);
            const bool isBoundAllTheSame = answer.end == PortalCall::End::declined && namesAny(shortcuts);
            if (answer.end == PortalCall::End::done || isBoundAllTheSame)
                take(shortcuts);
            else
                setAll(State::refused);
        },
        this);
}

void PortalGlobalShortcuts::take(const QVariant &shortcuts)
{
    for (auto &[shortcut, binding] : m_bindings)
        binding = {State::refused};
    for (const PortalShortcut &each : qdbus_cast<QList<PortalShortcut>>(shortcuts)) {
        const auto shortcut = shortcutOf(each.id);
        const QString keys = legible(each.about.value(u"trigger_description"_s).toString());
        if (shortcut && m_bindings.contains(*shortcut) && !keys.isEmpty())
            m_bindings[*shortcut] = {State::bound, keys};
    }
    Q_EMIT changed();
}

void PortalGlobalShortcuts::setAll(State state)
{
    m_bindings.clear();
    for (const Wish &wish : m_wishes)
        m_bindings[wish.shortcut] = {state};
    Q_EMIT changed();
}

GlobalShortcutBinding::Binding PortalGlobalShortcuts::binding(GlobalShortcut shortcut) const
{
    const auto found = m_bindings.find(shortcut);
    return found == m_bindings.end() ? Binding{} : found->second;
}

bool PortalGlobalShortcuts::canShowDesktopSettings() const
{
    return m_version >= showsSettings && !m_portal.isEmpty();
}

void PortalGlobalShortcuts::showDesktopSettings()
{
    if (canShowDesktopSettings())
        m_bus.asyncCall(callOf(shortcutsInterface, u"ConfigureShortcuts"_s,
                               {QVariant::fromValue(QDBusObjectPath(m_session)), QString(), QVariantMap()}));
}

void PortalGlobalShortcuts::portalChanged(const QString &former, const QString &now)
{
    if (m_wishes.empty())
        return;
    const bool hasLeft = !former.isEmpty() && former == m_portal;
    if (hasLeft) {
        letGo();
        m_session.clear();
        m_portal.clear();
        setAll(State::unavailable);
    }
    const bool isUnavailable = binding(m_wishes.front().shortcut).state == State::unavailable;
    if (isUnavailable && !now.isEmpty()) { // which knows nothing of what was told the former one
        setAll(State::waiting);
        introduce();
    }
}

bool PortalGlobalShortcuts::isOfSession(const QDBusMessage &signal) const
{
    return !m_portal.isEmpty() && signal.service() == m_portal &&
           signal.arguments().value(0).value<QDBusObjectPath>().path() == m_session;
}

void PortalGlobalShortcuts::activated(const QDBusMessage &signal)
{
    const auto shortcut = shortcutOf(signal.arguments().value(1).toString());
    if (!shortcut || !isOfSession(signal) || m_held.contains(*shortcut))
        return;
    m_held.insert(*shortcut);
    const auto options = qdbus_cast<QVariantMap>(signal.arguments().value(3));
    Q_EMIT pressed(*shortcut, options.value(u"activation_token"_s).toString());
}

void PortalGlobalShortcuts::deactivated(const QDBusMessage &signal)
{
    const auto shortcut = shortcutOf(signal.arguments().value(1).toString());
    if (shortcut && isOfSession(signal) && m_held.remove(*shortcut))
        Q_EMIT released(*shortcut);
}

void PortalGlobalShortcuts::shortcutsChanged(const QDBusMessage &signal)
{
    if (isOfSession(signal))
        take(signal.arguments().value(1));
}

void PortalGlobalShortcuts::sessionClosed(const QDBusMessage &signal)
{
    if (m_portal.isEmpty() || signal.service() != m_portal || signal.path() != m_session)
        return;
    letGo();
    m_session.clear();
    m_portal.clear();
    setAll(State::refused);
}

void PortalGlobalShortcuts::letGo()
{
    for (const GlobalShortcut shortcut : std::exchange(m_held, {}))
        Q_EMIT released(shortcut);
}

QDBusPendingCall PortalGlobalShortcuts::closeSession()
{
    auto close = QDBusMessage::createMethodCall(PortalCall::service, m_session, sessions, u"Close"_s);
    close.setAutoStartService(false);
    m_session.clear();
    m_portal.clear();
    return m_bus.asyncCall(close, replyMilliseconds);
}

} // namespace morvane
