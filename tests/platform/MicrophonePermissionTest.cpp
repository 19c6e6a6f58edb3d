#include "platform/linux/MicrophonePermission.h"

#include "audio/AudioError.h"
#include "audio/AudioPermissionService.h"
#include "support/PrivateBus.h"

#include <QDBusObjectPath>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The desktop's side: refuses to serve, or answers as the test says, to whoever listens at the handle.
class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Device")

public:
    explicit FakePortal(QDBusConnection bus)
        : m_bus(std::move(bus))
    {}
    std::optional<uint> response;
    int asked = 0;

    void answer(const QDBusMessage &call, const QString &token)
    {
        const QString handle = u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(
            call.service().mid(1).replace(u'.', u'_'), token);
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(handle))));
        auto signal = QDBusMessage::createSignal(handle, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        signal.setArguments({*response, QVariantMap()});
        m_bus.send(signal);
    }

public Q_SLOTS:
    QDBusObjectPath AccessDevice(uint process, QStringList devices, QVariantMap options,
                                 const QDBusMessage &call)
    {
        ++asked;
        call.setDelayedReply(true);
        if (!response || process != QCoreApplication::applicationPid() ||
            devices != QStringList{u"microphone"_s})
            m_bus.send(call.createErrorReply(u"org.freedesktop.portal.Error.NotAllowed"_s, u"not inside"_s));
        else
            answer(call, options.value(u"handle_token"_s).toString());
        return {};
    }

private:
    QDBusConnection m_bus;
};

TEST(MicrophonePermissionTest, ASandboxDecidesOrThePersonDoesAndNobodyElseIsAsked)
{
    const QTemporaryDir folder;
    PrivateBus bus;
    auto theirs = bus.connection();
    const auto ours = bus.connection();
    FakePortal portal(theirs);
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
        if (each.hasPortal) {
            theirs.registerObject(u"/org/freedesktop/portal/desktop"_s, &portal,
                                  QDBusConnection::ExportAllContents);
            theirs.registerService(u"org.freedesktop.portal.Desktop"_s);
        }
        portal.response = each.response;
        portal.asked = 0;
        MicrophonePermission permission({description, ours});
        AudioPermissionService service(permission);
        for (int press = 0; press < 2; ++press)
            TestWait::await(service.settle({}));
        const auto refusal = service.refusal();
        EXPECT_EQ(refusal ? std::optional(refusal->reason()) : std::nullopt, each.refusal) << each.what;
        EXPECT_EQ(portal.asked, each.asked) << each.what;
    }
}

} // namespace

} // namespace morvane

#include "MicrophonePermissionTest.moc"
