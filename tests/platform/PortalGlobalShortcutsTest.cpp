// Keys by the portal, which a test plays on a bus of its own.

#include "platform/linux/PortalGlobalShortcuts.h"

#include "support/PlayedPortal.h"

#include <QDBusMetaType>
#include <QDBusVariant>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using State = GlobalShortcutBinding::State;

// A shortcut as the portal tells it.
struct Bound {
    QString id;
    QVariantMap about;
};

static QDBusArgument &operator<<(QDBusArgument &to, const Bound &shortcut)
{
    to.beginStructure();
    to << shortcut.id << shortcut.about;
    to.endStructure();
    return to;
}

static const QDBusArgument &operator>>(const QDBusArgument &from, Bound &)
{
    return from; // never read
}

namespace {

const QString object = u"/org/freedesktop/portal/desktop"_s;
const QString shortcuts = u"org.freedesktop.portal.GlobalShortcuts"_s;

// A portal, and what is told of it and asked of it, in order.
class Portal : public PlayedPortal {
public:
    explicit Portal(const QDBusConnection &bus, uint version = 2)
        : PlayedPortal(bus, [this](const auto &call, const auto &from) { return take(call, from); })
        , m_version(version)
    {
        qDBusRegisterMetaType<Bound>();
        qDBusRegisterMetaType<QList<Bound>>();
    }

    void activate(const QString &signal, const QString &id)
    {
        tell(object, shortcuts, signal,
             {QVariant::fromValue(QDBusObjectPath(session)), id, quint64{1},
              QVariantMap{{u"activation_token"_s, u"token of "_s + id}}});
    }
    void close() { tell(session, u"org.freedesktop.portal.Session"_s, u"Closed"_s, {}); }

    QStringList told;
    QString session;
    QStringList open;             // the sessions
    bool bindsAtOnce = false;     // as Plasma 5 does
    uint answer = 0;              // 0: the person says yes
    bool hasIt = true;            // whether there are shortcuts here at all
    QString others = u"Meta+V"_s; // what it binds, whatever was asked for; empty for nothing

private:
    bool take(const QDBusMessage &call, const QDBusConnection &from)
    {
        told += call.member();
        if (call.member() == "Register"_L1) {
            told.last() += u' ' + call.arguments().at(0).toString();
            from.send(call.createReply());
        } else if (call.member() == "Get"_L1) {
            from.send(call.createReply(QVariant::fromValue(QDBusVariant(m_version))));
        } else if (!hasIt) {
            return false;
        } else if (call.member() == "CreateSession"_L1) {
            begin(call, from);
        } else if (call.member() == "BindShortcuts"_L1) {
            const QVariant made = bound(call.arguments().at(1).value<QDBusArgument>());
            PlayedPortal::answer(call, from, answer, {{u"shortcuts"_s, made}});
        } else {
            if (call.member() == "Close"_L1)
                open.removeOne(call.path());
            from.send(call.createReply());
        }
        return true;
    }

    // A name is one session's at a time.
    void begin(const QDBusMessage &call, const QDBusConnection &from)
    {
        session = handleOf(call, u"session"_s);
        if (open.contains(session))
            return PlayedPortal::answer(call, from, 2);
        open += session;
        QVariantMap results{{u"session_handle"_s, session}};
        if (bindsAtOnce)
            results[u"shortcuts"_s] = bound(optionsOf(call).value(u"shortcuts"_s).value<QDBusArgument>());
        PlayedPortal::answer(call, from, 0, results);
    }

    QVariant bound(const QDBusArgument &wishes)
    {
        QList<Bound> made;
        wishes.beginArray();
        while (!wishes.atEnd()) {
            QString id;
            QVariantMap about;
            wishes.beginStructure();
            wishes >> id >> about;
            wishes.endStructure();
            made.append({id, {{u"trigger_description"_s, others}}});
            told.last() += u' ' + id + u'=' + about.value(u"preferred_trigger"_s).toString();
        }
        wishes.endArray();
        return QVariant::fromValue(made);
    }

    const uint m_version;
};

class PortalGlobalShortcutsTest : public testing::Test {
protected:
    void SetUp() override
    {
        QObject::connect(&m_keys, &GlobalShortcutBinding::pressed, &m_keys,
                         [this](GlobalShortcut, const QString &token) { m_heard += u"down "_s + token; });
        QObject::connect(&m_keys, &GlobalShortcutBinding::released, &m_keys,
                         [this](GlobalShortcut) { m_heard += u"up"_s; });
    }
    void bindBoth()
    {
        m_keys.bind(
            {{GlobalShortcut::chat, Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_Space, u"Show"_s},
             {GlobalShortcut::talk, QKeyCombination(Qt::Key_F13), u"Talk"_s}});
        TestWait::until([this] { return state() != State::waiting; });
    }
    [[nodiscard]] State state() const { return m_keys.binding(GlobalShortcut::talk).state; }

    PrivateBus m_bus;
    PortalGlobalShortcuts m_keys{m_bus.connection()};
    QStringList m_heard;
};

TEST_F(PortalGlobalShortcutsTest, TheDesktopsOwnKeysAreToldAndHeardUntilTheyAreUp)
{
    Portal portal(m_bus.connection());
    bindBoth();
    EXPECT_EQ(portal.told.join(u", "_s), u"Register ai.morvane.MorvaneGPT, Get, CreateSession, "
                                         u"BindShortcuts show-window=CTRL+SHIFT+space hold-to-talk=F13"_s);
    EXPECT_EQ(m_keys.binding(GlobalShortcut::talk),
              (GlobalShortcutBinding::Binding{State::bound, u"Meta+V"_s}));

    // Another program's, and another session's.
    auto forged = QDBusMessage::createSignal(object, shortcuts, u"Activated"_s);
    forged.setArguments(
        {QVariant::fromValue(QDBusObjectPath(portal.session)), u"hold-to-talk"_s, quint64{1}, QVariantMap()});
    m_bus.connection().send(forged);
    const QString session = std::exchange(portal.session, object + u"/session/1/other"_s);
    portal.activate(u"Activated"_s, u"hold-to-talk"_s);
    portal.session = session;
    portal.activate(u"Activated"_s, u"hold-to-talk"_s);
    portal.activate(u"Activated"_s, u"hold-to-talk"_s); // it repeats
    portal.activate(u"Deactivated"_s, u"hold-to-talk"_s);
    portal.activate(u"Deactivated"_s, u"show-window"_s); // never went down
    portal.activate(u"Activated"_s, u"show-window"_s);
    TestWait::until([this] { return m_heard.size() >= 3; });
    EXPECT_EQ(m_heard.join(u", "_s), u"down token of hold-to-talk, up, down token of show-window"_s);

    m_keys.showDesktopSettings();
    m_keys.release();
    TestWait::until([&] { return portal.told.last() == "Close"_L1; });
    EXPECT_EQ(portal.told.at(portal.told.size() - 2), u"ConfigureShortcuts"_s);
    EXPECT_EQ(m_heard.last(), u"up"_s) << "what was held is let go";
}

TEST_F(PortalGlobalShortcutsTest, WhatTheDesktopOrThePersonRefusesIsSaid)
{
    bindBoth();
    EXPECT_EQ(state(), State::unavailable) << "there is no portal";
    {
        Portal portal(m_bus.connection(), 1);
        portal.hasIt = false;
        bindBoth();
        EXPECT_EQ(state(), State::unavailable) << "it doesn't know of them";
        portal.hasIt = true;
        portal.answer = 1;
        bindBoth();
        EXPECT_EQ(state(), State::refused);
        EXPECT_FALSE(m_keys.canShowDesktopSettings());
        portal.answer = 0;
        portal.others.clear();
        bindBoth();
        EXPECT_EQ(state(), State::refused) << "it was given no key";
        portal.answer = 2; // and yet it tells keys, as GNOME 48 does
        portal.others = u"Press <Shift><Alt>v"_s;
        bindBoth();
        EXPECT_EQ(m_keys.binding(GlobalShortcut::talk),
                  (GlobalShortcutBinding::Binding{State::bound, u"Press Shift+Alt+v"_s}));
        portal.activate(u"Activated"_s, u"hold-to-talk"_s);
        TestWait::until([this] { return m_heard.size() == 1; });
    }
    TestWait::until([this] { return state() == State::unavailable; }); // the portal has left
    EXPECT_EQ(m_heard.last(), u"up"_s);
    Portal next(m_bus.connection());
    TestWait::until([this] { return state() == State::bound; });
    next.close();
    TestWait::until([this] { return state() == State::refused; });
}

TEST_F(PortalGlobalShortcutsTest, APortalThatBindsWithTheSessionIsNotAskedAgainAndKnowsItByItsName)
{
    Portal portal(m_bus.connection(), 1);
    portal.bindsAtOnce = true;
    bindBoth();
    EXPECT_EQ(portal.told.last(), u"CreateSession show-window=CTRL+SHIFT+space hold-to-talk=F13"_s);
    EXPECT_EQ(m_keys.binding(GlobalShortcut::talk),
              (GlobalShortcutBinding::Binding{State::bound, u"Meta+V"_s}));
    const QString name = portal.session.section(u'/', -1);
    PortalGlobalShortcuts next(m_bus.connection());
    next.bind({{GlobalShortcut::chat, QKeyCombination(Qt::Key_F14), u"Show"_s}});
    TestWait::until([&] { return next.binding(GlobalShortcut::chat).state == State::bound; });
    EXPECT_EQ(portal.session.section(u'/', -1), name);
}

TEST_F(PortalGlobalShortcutsTest, WhatIsWishedForMeanwhileIsAskedForOnceTheSessionIsThere)
{
    Portal portal(m_bus.connection());
    bindBoth();
    bindBoth();
    EXPECT_EQ(state(), State::bound);
    m_keys.release();
    portal.bindsAtOnce = true;
    m_keys.bind({{GlobalShortcut::talk, QKeyCombination(Qt::Key_F13), u"Talk"_s}});
    TestWait::until([&] { return portal.told.last() == "CreateSession hold-to-talk=F13"_L1; });
    m_keys.bind({{GlobalShortcut::talk, QKeyCombination(Qt::Key_F14), u"Talk"_s}});
    TestWait::until([this] { return state() != State::waiting; });
    EXPECT_EQ(portal.told.last(), u"CreateSession hold-to-talk=F14"_s);
    EXPECT_EQ(portal.open.size(), 1);
}

} // namespace

} // namespace morvane
