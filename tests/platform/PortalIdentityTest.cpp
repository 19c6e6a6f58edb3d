#include "platform/linux/PortalIdentity.h"

#include "support/PrivateBus.h"

#include <gtest/gtest.h>

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

} // namespace

} // namespace morvane
