#include "platform/linux/StatusNotifierItem.h"

#include "support/PrivateBus.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <gtest/gtest.h>

#include <set>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The desktop's side: what keeps the list of icons, with a panel or without.
class Watcher {
public:
    Watcher(PrivateBus &bus, bool hasPanel)
        : m_hasPanel(hasPanel)
        , m_service(bus.connection(), name, [this](const QDBusMessage &call, const QDBusConnection &at) {
            if (call.member() == "Get"_L1)
                return at.send(call.createReply(QVariant::fromValue(QDBusVariant(m_hasPanel))));
            if (call.member() != "RegisterStatusNotifierItem"_L1)
                return false;
            icons += call.arguments().value(0).toString();
            return at.send(call.createReply());
        })
    {}
    void setPanel(bool hasPanel)
    {
        m_hasPanel = hasPanel;
        m_service.tell(u"/StatusNotifierWatcher"_s, name,
                       hasPanel ? u"StatusNotifierHostRegistered"_s : u"StatusNotifierHostUnregistered"_s);
    }
    QStringList icons; // that were ever registered

private:
    const QString name = u"org.kde.StatusNotifierWatcher"_s;
    bool m_hasPanel;
    PlayedService m_service;
};

class StatusNotifierItemTest : public testing::Test {
protected:
    // What a panel gets for a call to the icon.
    QVariantList ask(const QString &path, const QString &interface, const QString &method,
                     const QVariantList &arguments)
    {
        auto message = QDBusMessage::createMethodCall(watcher->icons.value(0), path, interface, method);
        message.setArguments(arguments);
        const QDBusPendingCallWatcher answer(panel.asyncCall(message));
        TestWait::until([&] { return answer.isFinished(); });
        return answer.isError() ? QVariantList{answer.error().name()} : answer.reply().arguments();
    }
    QVariant read(const QString &property)
    {
        const auto answer = ask(u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                {u"org.kde.StatusNotifierItem"_s, property});
        return qvariant_cast<QDBusVariant>(answer.value(0)).variant();
    }
    QVariantList menu(const QString &method, const QVariantList &arguments)
    {
        return ask(qvariant_cast<QDBusObjectPath>(read(u"Menu"_s)).path(), u"com.canonical.dbusmenu"_s,
                   method, arguments);
    }
    void awaitDrawn(bool isDrawn)
    {
        TestWait::until([&] { return icon->isDrawn() == isDrawn; });
    }

    PrivateBus bus;
    QDBusConnection panel = bus.connection();
    std::optional<Watcher> watcher;
    std::optional<StatusNotifierItem> icon{std::in_place, bus.connection()};
    const TrayFace face{TrayState::idle,
                        u"words"_s,
                        {{TrayCommand::show, u"Show a_b"_s}, {TrayCommand::quit, u"Quit"_s, true}}};
};

TEST_F(StatusNotifierItemTest, FollowsThePanelAsItComesGoesAndIsStartedAnew)
{
    icon->show(face);
    TestWait::settle();
    EXPECT_FALSE(icon->isDrawn());
    watcher.emplace(bus, false);
    TestWait::until([&] { return watcher->icons.size() == 1; });
    TestWait::settle();
    EXPECT_FALSE(icon->isDrawn()) << "a list that nobody draws";
    for (const bool hasPanel : {true, false, true}) {
        watcher->setPanel(hasPanel);
        awaitDrawn(hasPanel);
    }
    watcher.reset();
    awaitDrawn(false);
    watcher.emplace(bus, true);
    awaitDrawn(true);
    EXPECT_EQ(watcher->icons.size(), 1);

    QDBusServiceWatcher gone(watcher->icons.front(), panel);
    bool isGone = false;
    QObject::connect(&gone, &QDBusServiceWatcher::serviceUnregistered, [&] { isGone = true; });
    icon->hide();
    EXPECT_FALSE(icon->isDrawn());
    TestWait::until([&] { return isGone; });
    icon->show(face);
    awaitDrawn(true);
    EXPECT_EQ(watcher->icons.size(), 2);
    EXPECT_NE(watcher->icons.front(), watcher->icons.back());
}

TEST_F(StatusNotifierItemTest, PanelsReadItsStateAndAPictureOfEach)
{
    watcher.emplace(bus, true);
    std::set<QByteArray> drawings;
    for (const TrayState state :
         {TrayState::idle, TrayState::replying, TrayState::asking, TrayState::locked}) {
        icon->show({state, u"words"_s, {}});
        awaitDrawn(true);
        EXPECT_EQ(read(u"Status"_s).toString(),
                  state == TrayState::asking ? u"NeedsAttention"_s : u"Active"_s);
        for (const QString &property : {u"IconPixmap"_s, u"AttentionIconPixmap"_s}) {
            const auto pictures = qdbus_cast<QList<TrayPicture>>(read(property));
            ASSERT_GE(pictures.size(), 3);
            for (const TrayPicture &picture : pictures) {
                EXPECT_EQ(picture.pixels.size(), 4 * picture.width * picture.height);
                EXPECT_EQ(picture.pixels.front(), 0) << "its corner shows the panel";
            }
            drawings.insert(pictures.front().pixels);
        }
    }
    EXPECT_EQ(drawings.size(), 4U);
    EXPECT_EQ(qdbus_cast<TrayToolTip>(read(u"ToolTip"_s)).text, u"words"_s);
    EXPECT_EQ(read(u"Id"_s).toString(), u"ai.morvane.MorvaneGPT"_s);
}

TEST_F(StatusNotifierItemTest, AClickOnTheIconOrOnAnEntryThatIsThereChooses)
{
    watcher.emplace(bus, true);
    icon->show(face);
    awaitDrawn(true);
    std::vector<TrayCommand> chosen;
    QObject::connect(&*icon, &TrayIcon::chosen, [&](TrayCommand command) { chosen.push_back(command); });
    const auto drawn = menu(u"GetLayout"_s, {0, -1, QStringList{}});
    ASSERT_EQ(drawn.size(), 2);
    const auto layout = qdbus_cast<TrayMenuLayout>(drawn.at(1));
    ASSERT_EQ(layout.children.size(), 3);
    EXPECT_EQ(layout.children.at(0).properties.value(u"label"_s), u"Show a__b"_s);
    EXPECT_EQ(layout.children.at(1).properties.value(u"type"_s), u"separator"_s);
    const int quit = layout.children.at(2).id;
    EXPECT_EQ(qvariant_cast<QDBusVariant>(menu(u"GetProperty"_s, {quit, u"label"_s}).value(0)).variant(),
              u"Quit"_s);
    const auto event = [&](int id, const QString &name) {
        menu(u"Event"_s, {id, name, QVariant::fromValue(QDBusVariant(0)), 0U});
    };
    event(quit, u"hovered"_s);
    event(quit, u"clicked"_s);
    menu(u"EventGroup"_s, {QVariant::fromValue(QList<TrayMenuEvent>{
                              {layout.children.at(0).id, u"clicked"_s, QDBusVariant(0), 0}})});
    ask(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {1, 2});
    icon->show({TrayState::idle, {}, {{TrayCommand::show, u"Show"_s}}});
    event(quit, u"clicked"_s); // the panel still showed it
    event(-1, u"clicked"_s);
    EXPECT_EQ(chosen, (std::vector{TrayCommand::quit, TrayCommand::show, TrayCommand::show}));
    EXPECT_GT(menu(u"GetLayout"_s, {0, 1, QStringList{}}).value(0).toUInt(), drawn.at(0).toUInt());
}

} // namespace

} // namespace morvane
