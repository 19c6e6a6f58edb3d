// What the desktop's portal is told of the program, and what the program heeds of its words.

#include "audio/AudioError.h"
#include "audio/AudioPermissionService.h"
#include "platform/linux/DesktopAppearance.h"
#include "platform/linux/MicrophonePermission.h"
#include "platform/linux/PortalIdentity.h"
#include "support/PlayedPortal.h"
#include "support/PrivateBus.h"
#include "utils/files/PrivateFile.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <sys/prctl.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Whether the portal answers or, being older, knows no such question.
TEST(PortalIdentityTest, IsToldAheadOfWhatIsAskedAndTheProcessIsHiddenAgain)
{
    PrivateBus bus;
    for (const bool isKnown : {true, false}) {
        QStringList heard;
        const PlayedService portal(bus.connection(), u"org.freedesktop.portal.Desktop"_s,
                                   [&](const QDBusMessage &call, const QDBusConnection &on) {
                                       heard += call.interface() + u' ' + call.member() + u' ' +
                                                call.arguments().value(0).toString();
                                       return isKnown && on.send(call.createReply());
                                   });
        const int dumpable = ::prctl(PR_GET_DUMPABLE);
        ::prctl(PR_SET_DUMPABLE, 0);
        const auto ours = bus.connection();
        PortalIdentity::tell(ours);
        EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1) << "the portal looks who asks";
        ours.send(QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s, u"/any"_s,
                                                 u"any.Portal"_s, u"Ask"_s));
        TestWait::until([&] { return heard.size() == 2 && ::prctl(PR_GET_DUMPABLE) == 0; });
        EXPECT_EQ(heard,
                  (QStringList{u"org.freedesktop.host.portal.Registry Register ai.morvane.MorvaneGPT"_s,
                               u"any.Portal Ask "_s}));
        ::prctl(PR_SET_DUMPABLE, dumpable);
    }
    PortalIdentity::tell(std::nullopt);
}

TEST(MicrophonePermissionTest, ASandboxDecidesOrThePersonDoesAndNobodyElseIsAsked)
{
    const QTemporaryDir folder;
    PrivateBus bus;
    const auto ours = bus.connection();
    std::optional<uint> response; // none: it doesn't serve this program
    int asked = 0;
    const PlayedService::Answer answer = [&](const QDBusMessage &call, const QDBusConnection &on) {
        const QVariantList given = call.arguments();
        if (call.member() != "AccessDevice"_L1)
            return false;
        ++asked;
        if (response && given.at(0).toUInt() == QCoreApplication::applicationPid() &&
            given.at(1).toStringList() == QStringList{u"microphone"_s})
            PlayedPortal::answer(call, on, *response);
        else
            on.send(call.createErrorReply(u"org.freedesktop.portal.Error.NotAllowed"_s, u"not inside"_s));
        return true;
    };
    std::optional<PlayedPortal> portal;
    const QString description = folder.filePath(u"info"_s);
    const QByteArray withSound = "[Context]\nsockets=wayland;pulseaudio;\n";
    const QByteArray withoutSound = "[Context]\nsockets=wayland;nopulseaudio;\n";
    struct {
        const char *what;
        QByteArray sandbox; // empty: none
        bool hasPortal;
        std::optional<uint> response;
        bool isRefused;
        int asked;
    } const cases[] = {
        {"no sandbox", {}, false, {}, false, 0},       {"no sound server", withoutSound, false, {}, true, 0},
        {"no portal", withSound, false, {}, false, 0}, {"not served", withSound, true, {}, false, 1},
        {"refused", withSound, true, 1, true, 2}, // at each press
        {"broken", withSound, true, 2, true, 2},       {"allowed", withSound, true, 0, false, 1},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.what);
        if (!each.sandbox.isEmpty())
            PrivateFile::write(description, each.sandbox);
        if (each.hasPortal && !portal)
            portal.emplace(bus.connection(), answer);
        response = each.response;
        asked = 0;
        MicrophonePermission permission({description, ours});
        AudioPermissionService service(permission);
        for (int press = 0; press < 2; ++press)
            TestWait::await(service.settle({}));
        const auto refusal = service.refusal();
        EXPECT_EQ(refusal.has_value(), each.isRefused);
        EXPECT_TRUE(!refusal || refusal->reason() == AudioError::Case::microphonePermissionDenied);
        EXPECT_EQ(asked, each.asked);
    }
}

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
