#include "platform/linux/DesktopAppearance.h"

#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString group = u"org.freedesktop.appearance"_s;

QVariant colour(double red, double green, double blue)
{
    QDBusArgument argument;
    argument.beginStructure();
    argument << red << green << blue;
    argument.endStructure();
    return QVariant::fromValue(argument);
}

// As portals tell them, which have one answer from each of their backends and put the one that counts first.
QVariant answers()
{
    QDBusArgument argument;
    argument.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
    for (const auto &[name, values] :
         {std::pair{u"org.gnome.desktop.interface"_s, QVariantMap{{u"color-scheme"_s, 0U}}},
          std::pair{group, QVariantMap{{u"color-scheme"_s, 1U}, {u"accent-color"_s, colour(0.2, 0.5, 1)}}},
          std::pair{group, QVariantMap{{u"color-scheme"_s, 0U}, {u"contrast"_s, 1U}}}}) {
        argument.beginMapEntry();
        argument << name << values;
        argument.endMapEntry();
    }
    argument.endMap();
    return QVariant::fromValue(argument);
}

TEST(DesktopAppearanceTest, TakesThePortalsWordAtTheStartAndLaterAndNobodyElses)
{
    PrivateBus bus;
    DesktopAppearance early(bus.connection()); // there before the portal, which is slow to start
    TestWait::settle();
    PlayedService portal(bus.connection(), u"org.freedesktop.portal.Desktop"_s,
                         [](const QDBusMessage &call, const QDBusConnection &on) {
                             EXPECT_EQ(call.member(), u"ReadAll"_s);
                             return on.send(call.createReply(answers()));
                         });
    PlayedService stranger(bus.connection(), u"org.example.Stranger"_s,
                           [](const auto &, const auto &) { return false; });
    DesktopAppearance appearance(bus.connection());
    const auto becomes = [&appearance](const DesktopLook &look) {
        TestWait::until([&] { return appearance.look() == look; });
        EXPECT_EQ(appearance.look(), look);
    };
    const auto say = [](PlayedService &who, const QString &of, const QString &key, const QVariant &value) {
        who.tell(u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s,
                 u"SettingChanged"_s, {of, key, QVariant::fromValue(QDBusVariant(value))});
    };
    DesktopLook look{.isDark = true, .hasHighContrast = true, .accent = std::array{0.2, 0.5, 1.0}};
    becomes(look);
    TestWait::until([&] { return early.look() == look; });

    say(stranger, group, u"color-scheme"_s, 2U);
    say(portal, u"org.gnome.desktop.interface"_s, u"color-scheme"_s, 0U);
    say(portal, group, u"contrast"_s, 0U);
    look.hasHighContrast = false;
    becomes(look);
    say(portal, group, u"contrast"_s, 1U);
    look.hasHighContrast = true;
    becomes(look);
    say(portal, group, u"reduced-motion"_s, 1U);
    look.hasReducedMotion = true;
    becomes(look);
    for (const QVariant &none : {colour(-1, -1, -1), colour(0, 1.01, 0), colour(0, std::nan(""), 0),
                                 QVariant(u"blue"_s), QVariant(1U)}) {
        look.accent = std::array{1.0, 0.0, 0.0};
        say(portal, group, u"accent-color"_s, colour(1, 0, 0));
        becomes(look);
        look.accent.reset();
        say(portal, group, u"accent-color"_s, none);
        becomes(look);
    }
    say(portal, group, u"color-scheme"_s, 2U);
    say(portal, group, u"contrast"_s, u"high"_s);
    becomes({.hasReducedMotion = true});
}

} // namespace

} // namespace morvane
