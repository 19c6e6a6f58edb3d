#include "platform/linux/MicrophonePermission.h"

#include "audio/AudioError.h"
#include "audio/AudioPermissionService.h"
#include "support/PlayedPortal.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

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
    using Case = AudioError::Case;
    const QByteArray withSound = "[Context]\nsockets=wayland;pulseaudio;\n";
    struct {
        const char *what;
        std::optional<QByteArray> sandbox;
        bool hasPortal;
        std::optional<uint> response;
        std::optional<Case> refusal;
        int asked;
    } const cases[] = {
        {"no sandbox", std::nullopt, false, {}, std::nullopt, 0},
        {"no sound server",
         "[Context]\nsockets=wayland;nopulseaudio;\n",
         false,
         {},
         Case::microphonePermissionDenied,
         0},
        {"no portal", withSound, false, {}, std::nullopt, 0},
        {"not served", withSound, true, {}, std::nullopt, 1},
        {"refused", withSound, true, 1, Case::microphonePermissionDenied, 2}, // at each press
        {"broken", withSound, true, 2, Case::microphonePermissionDenied, 2},
        {"allowed", withSound, true, 0, std::nullopt, 1},
    };
    for (const auto &each : cases) {
        QFile file(description);
        if (each.sandbox && file.open(QIODevice::WriteOnly))
            file.write(*each.sandbox);
        file.close();
        if (each.hasPortal && !portal)
            portal.emplace(bus.connection(), answer);
        response = each.response;
        asked = 0;
        MicrophonePermission permission({description, ours});
        AudioPermissionService service(permission);
        for (int press = 0; press < 2; ++press)
            TestWait::await(service.settle({}));
        const auto refusal = service.refusal();
        EXPECT_EQ(refusal ? std::optional(refusal->reason()) : std::nullopt, each.refusal) << each.what;
        EXPECT_EQ(asked, each.asked) << each.what;
    }
}

} // namespace

} // namespace morvane
