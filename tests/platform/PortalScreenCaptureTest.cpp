// The desktop's portal on a bus of the test's own.

#include "platform/linux/PortalScreenCapture.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "support/ManualClock.h"
#include "support/PlayedPortal.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QFile>
#include <QRasterWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Picture = std::shared_ptr<const ScreenPicture>;
using Reason = ScreenCaptureFailure::Reason;

namespace {

using Programs = QMap<QString, QStringList>;

// Keeps the latest question, and answers when a test says. It may be the store as well, where the desktop
// keeps what the person allows.
class Portal : public PlayedPortal {
public:
    explicit Portal(const QDBusConnection &bus)
        : PlayedPortal(bus, [this](const auto &call, const auto &on) { return take(call, on); })
        , m_bus(bus)
    {
        qDBusRegisterMetaType<Programs>();
    }

    void answer(uint response, const QString &file) const { answer(response, file, m_bus); }
    void answer(uint response, const QString &file, const QDBusConnection &by) const
    {
        const QVariantMap results{{u"uri"_s, QUrl::fromLocalFile(file).toString()}};
        decide(request, by, response, file.isEmpty() ? QVariantMap() : results);
    }

    QString request; // empty until it was asked
    QString error;   // given instead of a request
    bool choosesItsOwnPath = false;
    Programs programs; // that may

private:
    bool take(const QDBusMessage &call, const QDBusConnection &on)
    {
        if (call.member() == "Lookup"_L1) {
            EXPECT_EQ(call.arguments(), (QVariantList{u"screenshot"_s, u"screenshot"_s}));
            return on.send(programs.isEmpty()
                               ? call.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, u"no"_s)
                               : call.createReply(
                                     {QVariant::fromValue(programs), QVariant::fromValue(QDBusVariant(0))}));
        }
        if (call.member() != "Screenshot"_L1)
            return false;
        if (!error.isEmpty()) {
            request = u"refused"_s;
            return on.send(call.createErrorReply(error, u"no"_s));
        }
        EXPECT_FALSE(optionsOf(call).value(u"interactive"_s, true).toBool());
        request = handleOf(call, u"request"_s, choosesItsOwnPath ? u"own"_s : QString());
        return on.send(call.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    }

    QDBusConnection m_bus;
};

class PortalScreenCaptureTest : public testing::Test {
protected:
    PortalScreenCaptureTest()
    {
        window.show();
        looks.start(10);
        TestWait::settle();
    }

    void begin(PortalScreenCapture &by)
    {
        portal.request.clear();
        outcome = TestWait::begin(by.capture(stop.get_token()));
    }
    void awaitQuestion()
    {
        TestWait::until([&] { return !portal.request.isEmpty() || outcome->done; });
    }
    // Until the portal has the question; our window is gone by then.
    void awaitHiddenQuestion()
    {
        TestWait::until([&] { return !window.isVisible() || outcome->done; });
        EXPECT_TRUE(portal.request.isEmpty()) << "not before the desktop had time to hide the window";
        clock.advance(PortalScreenCapture::timeToHide);
        awaitQuestion();
        EXPECT_FALSE(window.isVisible() && !outcome->done);
    }
    void ask()
    {
        begin(capture);
        awaitHiddenQuestion();
    }
    [[nodiscard]] QString file(const QByteArray &bytes)
    {
        QFile file(folder.filePath(u"Screenshot ü.png"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }
    // Why there is no picture; nothing when there is one.
    [[nodiscard]] std::optional<Reason> ends()
    {
        TestWait::until([&] { return outcome->done; });
        EXPECT_TRUE(window.isVisible()) << "back whatever happens";
        if (!outcome->error)
            return std::nullopt;
        try {
            std::rethrow_exception(outcome->error);
        } catch (const ScreenCaptureFailure &failure) {
            return failure.reason;
        }
    }

    QTemporaryDir folder;
    ManualClock clock;
    Work work{clock};
    PrivateBus bus;
    QDBusConnection theirs = bus.connection();
    Portal portal{theirs};
    PortalScreenCapture capture{bus.connection(), clock, work};
    std::stop_source stop;
    std::shared_ptr<TestWait::Outcome<Picture>> outcome;
    QRasterWindow window;
    QTimer looks; // at files, which tell nobody that they go
};

TEST_F(PortalScreenCaptureTest, WhatThePersonAgreedToIsReadAndItsFileRemoved)
{
    for (const bool own : {false, true}) {
        portal.choosesItsOwnPath = own;
        ask();
        portal.answer(2, {}, bus.connection());
        const QString path = file("a picture");
        TestWait::until([&] { // a path of its own is listened to once it is known
            portal.answer(0, path);
            return outcome->done;
        });
        EXPECT_EQ(ends(), std::nullopt);
        const ScreenPicture &picture = **outcome->value;
        EXPECT_EQ(picture.bytes.view(), "a picture");
        EXPECT_EQ(picture.form, ScreenPicture::Form::file);
        EXPECT_LT(picture.part.width(), 1) << "the test's desktop has two displays";
        EXPECT_FALSE(QFile::exists(path));
    }
}

TEST_F(PortalScreenCaptureTest, WhatThePersonHasYetToAllowIsAskedForInTheirSightOnce)
{
    portal.own(u"org.freedesktop.impl.portal.PermissionStore"_s);
    const auto beginInSight = [this] {
        begin(capture);
        awaitQuestion();
        EXPECT_TRUE(window.isVisible()) << "the desktop asks only for the program in front";
    };
    beginInSight();
    portal.answer(1, {});
    EXPECT_EQ(ends(), Reason::refused);
    portal.programs = {{u"org.example.Other"_s, {u"yes"_s}}};
    beginInSight();
    const QString first = file("with our window");
    portal.answer(0, first);
    portal.request.clear();
    awaitHiddenQuestion();
    EXPECT_FALSE(QFile::exists(first));
    portal.answer(0, file("without it"));
    EXPECT_EQ(ends(), std::nullopt);
    EXPECT_EQ((**outcome->value).bytes.view(), "without it");

    // From then on, and where a former run was told.
    PortalScreenCapture next{bus.connection(), clock, work};
    portal.programs.insert(u"ai.morvane.MorvaneGPT"_s, {u"yes"_s});
    for (PortalScreenCapture *each : {&capture, &next}) {
        begin(*each);
        awaitHiddenQuestion();
        portal.answer(0, file("without it"));
        EXPECT_EQ(ends(), std::nullopt);
    }
}

TEST_F(PortalScreenCaptureTest, EachWayOfNotGettingItHasItsReasonAndLeavesNothing)
{
    for (const uint response : {1U, 2U}) {
        ask();
        const QString path = file("a picture");
        portal.answer(response, path);
        EXPECT_EQ(ends(), Reason::refused);
        TestWait::until([&] { return !QFile::exists(path); });
    }
    ask();
    portal.answer(0, {});
    EXPECT_EQ(ends(), Reason::failed);
    ask();
    portal.answer(0, folder.filePath(u"missing"_s));
    EXPECT_EQ(ends(), Reason::failed);
    for (const auto &[error, reason] :
         {std::pair(u"org.freedesktop.DBus.Error.AccessDenied"_s, Reason::refused),
          {u"org.freedesktop.portal.Error.NotAllowed"_s, Reason::refused},
          {u"org.freedesktop.DBus.Error.UnknownMethod"_s, Reason::absent}}) {
        portal.error = error;
        ask();
        EXPECT_EQ(ends(), reason) << error.toStdString();
    }
    portal.error.clear();
    ask();
    theirs.unregisterService(u"org.freedesktop.portal.Desktop"_s);
    EXPECT_EQ(ends(), Reason::failed) << "it went away with the question open";
    ask();
    EXPECT_EQ(ends(), Reason::absent) << "there is none";
}

TEST_F(PortalScreenCaptureTest, AnAnswerThatNobodyWaitsForAnyMoreLeavesNoFile)
{
    ask();
    clock.advance(PortalScreenCapture::longestQuestion);
    EXPECT_EQ(ends(), Reason::failed) << "the person didn't answer";
    const QString late = file("a picture");
    portal.answer(0, late);
    TestWait::until([&] { return !QFile::exists(late); });

    ask();
    stop.request_stop();
    EXPECT_THROW(std::ignore = ends(), CancelledError);
    const QString later = file("a picture");
    portal.answer(0, later);
    TestWait::until([&] { return !QFile::exists(later); });
}

TEST_F(PortalScreenCaptureTest, WithoutItsBusTheProgramIsBlindUntilItStartsAnew)
{
    bus.end();
    TestWait::settle();
    ask();
    EXPECT_EQ(ends(), Reason::blind);
}

} // namespace

} // namespace morvane
