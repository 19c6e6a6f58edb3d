// The desktop's portal on a bus of the test's own.

#include "platform/linux/PortalScreenCapture.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "support/ManualClock.h"
#include "support/PrivateBus.h"

#include <QDBusContext>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFile>
#include <QGuiApplication>
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

// Keeps the latest question, and answers when a test says.
class FakePortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Screenshot")

public:
    explicit FakePortal(QDBusConnection bus)
        : m_bus(std::move(bus))
    {}

    void answer(uint response, const QString &file) { answer(response, file, m_bus); }
    void answer(uint response, const QString &file, QDBusConnection by) const
    {
        auto signal = QDBusMessage::createSignal(request, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        QVariantMap results;
        if (!file.isEmpty())
            results.insert(u"uri"_s, QUrl::fromLocalFile(file).toString());
        signal.setArguments({response, results});
        by.send(signal);
    }

    QString request; // empty until it was asked
    QString error;   // given instead of a request
    bool choosesItsOwnPath = false;
    bool wasInteractive = true;

public Q_SLOTS:
    QDBusObjectPath Screenshot(const QString &, const QVariantMap &options)
    {
        if (!error.isEmpty()) {
            sendErrorReply(error, u"no"_s);
            request = u"refused"_s;
            return QDBusObjectPath(u"/"_s);
        }
        wasInteractive = options.value(u"interactive"_s).toBool();
        QString sender = message().service().mid(1);
        request = u"/org/freedesktop/portal/desktop/request/"_s + sender.replace(u'.', u'_') + u'/' +
                  (choosesItsOwnPath ? u"own"_s : options.value(u"handle_token"_s).toString());
        return QDBusObjectPath(request);
    }

private:
    QDBusConnection m_bus;
};

// Where the desktop keeps what the person allows.
class FakeStore : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.impl.portal.PermissionStore")

public:
    explicit FakeStore(QDBusConnection bus)
    {
        qDBusRegisterMetaType<Programs>();
        bus.registerObject(u"/org/freedesktop/impl/portal/PermissionStore"_s, this,
                           QDBusConnection::ExportAllSlots);
        bus.registerService(u"org.freedesktop.impl.portal.PermissionStore"_s);
    }

    using Programs = QMap<QString, QStringList>;
    Programs programs;

public Q_SLOTS:
    void Lookup(const QString &table, const QString &id, const QDBusMessage &call)
    {
        setDelayedReply(true);
        const bool isThere = table == "screenshot"_L1 && id == "screenshot"_L1 && !programs.isEmpty();
        connection().send(
            isThere ? call.createReply({QVariant::fromValue(programs), QVariant::fromValue(QDBusVariant(0))})
                    : call.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, id));
    }
};

class PortalScreenCaptureTest : public testing::Test {
protected:
    PortalScreenCaptureTest()
    {
        theirs.registerObject(u"/org/freedesktop/portal/desktop"_s, &portal, QDBusConnection::ExportAllSlots);
        theirs.registerService(u"org.freedesktop.portal.Desktop"_s);
        window.show();
        looks.start(10);
        TestWait::settle();
    }

    // Until the portal has the question; our window is gone by then.
    void ask()
    {
        outcome = std::make_shared<TestWait::Outcome<Picture>>();
        portal.request.clear();
        TestWait::collect(capture.capture(stop.get_token()), outcome);
        TestWait::until([&] { return !window.isVisible() || outcome->done; });
        EXPECT_TRUE(portal.request.isEmpty()) << "not before the desktop had time to hide the window";
        clock.advance(PortalScreenCapture::timeToHide);
        TestWait::until([&] { return !portal.request.isEmpty() || outcome->done; });
        EXPECT_FALSE(window.isVisible() && !outcome->done);
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
    FakePortal portal{theirs};
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
        EXPECT_FALSE(portal.wasInteractive);
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
    FakeStore store(theirs);
    const auto begin = [this] {
        outcome = std::make_shared<TestWait::Outcome<Picture>>();
        portal.request.clear();
        TestWait::collect(capture.capture(stop.get_token()), outcome);
        TestWait::until([&] { return !portal.request.isEmpty(); });
        EXPECT_TRUE(window.isVisible()) << "the desktop asks only for the program in front";
    };
    begin();
    portal.answer(1, {});
    EXPECT_EQ(ends(), Reason::refused);
    store.programs = {{u"org.example.Other"_s, {u"yes"_s}}};
    begin();
    const QString first = file("with our window");
    portal.answer(0, first);
    portal.request.clear();
    TestWait::until([&] { return !window.isVisible(); });
    EXPECT_FALSE(QFile::exists(first));
    clock.advance(PortalScreenCapture::timeToHide);
    TestWait::until([&] { return !portal.request.isEmpty(); });
    portal.answer(0, file("without it"));
    EXPECT_EQ(ends(), std::nullopt);
    EXPECT_EQ((**outcome->value).bytes.view(), "without it");

    // From then on, and where a former run was told.
    PortalScreenCapture next{bus.connection(), clock, work};
    store.programs.insert(u"ai.morvane.MorvaneGPT"_s, {u"yes"_s});
    for (PortalScreenCapture *each : {&capture, &next}) {
        outcome = std::make_shared<TestWait::Outcome<Picture>>();
        portal.request.clear();
        TestWait::collect(each->capture(stop.get_token()), outcome);
        TestWait::until([&] { return !window.isVisible(); });
        EXPECT_TRUE(portal.request.isEmpty());
        clock.advance(PortalScreenCapture::timeToHide);
        TestWait::until([&] { return !portal.request.isEmpty(); });
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

#include "PortalScreenCaptureTest.moc"
