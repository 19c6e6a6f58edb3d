// The real calendar service on a bus of its own, in a home of its own.

#include "platform/linux/EvolutionCalendars.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "services/DesktopActionError.h"
#include "support/ManualClock.h"
#include "support/PrivateBus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DesktopActionError::Plain;

namespace {

QDateTime utc(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().replace("\r\n ", "").replace("\r", "")
                                          : QByteArray();
}

class EvolutionCalendarsTest : public testing::Test {
protected:
    ~EvolutionCalendarsTest() override { work.end(); }

    // With the services that are installed, which it starts when they are asked for.
    void startBus()
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (const auto &[name, place] : {std::pair{u"HOME"_s, u"home"_s},
                                          {u"XDG_DATA_HOME"_s, u"data"_s},
                                          {u"XDG_CONFIG_HOME"_s, u"config"_s},
                                          {u"XDG_CACHE_HOME"_s, u"cache"_s},
                                          {u"XDG_RUNTIME_DIR"_s, u"run"_s}}) {
            QDir(folder.path()).mkdir(place);
            environment.insert(name, folder.filePath(place));
        }
        environment.insert(u"GSETTINGS_BACKEND"_s, u"memory"_s);
        environment.insert(u"GIO_USE_VFS"_s, u"local"_s);
        environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
        bus.emplace(u"/usr/share/dbus-1/session.conf"_s, environment);
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus->address());
    }

    template <typename T>
    std::optional<Plain> failureOf(QCoro::Task<T> task)
    {
        try {
            TestWait::await(std::move(task));
        } catch (const DesktopActionError &error) {
            return std::get<Plain>(error.reason());
        }
        return std::nullopt;
    }

    QByteArray stored() const
    {
        return contents(folder.filePath(u"data/evolution/calendar/system/calendar.ics"_s));
    }
    void awaitStored(bool there, const QByteArray &words)
    {
        QTimer looking;
        looking.start(20);
        TestWait::until([&] { return stored().contains(words) == there; });
    }

    QTemporaryDir folder;
    std::optional<PrivateBus> bus;
    ManualClock clock;
    Work work{clock};
    QByteArray zone = "Europe/Berlin";
    EvolutionCalendars calendars{folder.filePath(u"scratch"_s), clock, work, [this] { return zone; }};
    // Over the end of summer time.
    const CalendarStoring::Event event{u"Grüße, \"so\"; BEGIN:VALARM"_s, utc("2026-10-25T00:30:00Z"),
                                       utc("2026-10-25T02:00:00Z")};
};

TEST_F(EvolutionCalendarsTest, EventsGoInWithTheirZoneAndComeOutAgain)
{
    if (!QFile::exists(u"/usr/libexec/evolution-calendar-factory"_s)) {
        std::fputs("\n*** NOT TESTED: calendars, since there is no evolution-data-server here.\n\n", stderr);
        GTEST_SKIP();
    }
    EXPECT_FALSE(TestWait::await(calendars.add(event, {}, {}))) << "no bus";
    startBus();

    const auto all = TestWait::await(calendars.calendars({}));
    ASSERT_TRUE(all && !all->empty());
    const auto usual = std::ranges::find(*all, true, &CalendarStoring::Calendar::isDefault);
    ASSERT_TRUE(usual != all->end());
    EXPECT_EQ(std::ranges::count(*all, u"birthdays"_s, &CalendarStoring::Calendar::id), 0);

    const auto place = TestWait::await(calendars.add(event, {}, {}));
    ASSERT_TRUE(place);
    EXPECT_EQ(place->calendarName, usual->name);
    awaitStored(true, "UID:" + place->eventID.toUtf8());
    for (const char *line : {"SUMMARY:Grüße\\, \"so\"\\; BEGIN:VALARM\n", "Europe/Berlin:20261025T023000\n",
                             "Europe/Berlin:20261025T030000\n"})
        EXPECT_TRUE(stored().contains(line)) << line << stored().toStdString();

    zone = "UTC";
    const CalendarStoring::Event other{u"Other"_s, utc("2026-03-02T10:00:00Z"), utc("2026-03-02T10:00:00Z")};
    const auto second = TestWait::await(calendars.add(other, usual->id, {}));
    ASSERT_TRUE(second);
    awaitStored(true, "DTSTART:20260302T100000Z\n");

    TestWait::await(calendars.remove(*place, {}));
    awaitStored(false, "Grüße");
    EXPECT_TRUE(stored().contains("SUMMARY:Other"));
    TestWait::await(calendars.remove(*place, {})); // gone already

    EXPECT_EQ(failureOf(calendars.add(event, u"no-such"_s, {})), Plain::calendarUnavailable);
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(TestWait::await(calendars.add(event, {}, stopped.get_token())), CancelledError);
    EXPECT_FALSE(stored().contains("Grüße"));

    // The bus goes, and with it the service; this process stays.
    bus->end();
    EXPECT_FALSE(TestWait::await(calendars.calendars({})));
    EXPECT_EQ(failureOf(calendars.remove(*second, {})), Plain::calendarUnavailable);
}

TEST_F(EvolutionCalendarsTest, AFileHoldsTheEventForAnotherProgram)
{
    QString path;
    {
        EvolutionCalendars others(folder.filePath(u"scratch"_s), clock, work, [this] { return zone; });
        path = others.writeFile(event);
        const QByteArray file = contents(path);
        for (const char *line :
             {"BEGIN:VCALENDAR\n", "VERSION:2.0\n", "BEGIN:VTIMEZONE\n",
              "SUMMARY:Grüße\\, \"so\"\\; BEGIN:VALARM\n", "Europe/Berlin:20261025T023000\n"})
            EXPECT_TRUE(file.contains(line)) << line << file.toStdString();
        EXPECT_EQ(file.count("\nBEGIN:VEVENT"), 1);
        EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    }
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(failureOf(calendars.calendars({})), std::nullopt);
    EvolutionCalendars nowhere(u"/proc/no"_s, clock, work, [this] { return zone; });
    EXPECT_THROW(nowhere.writeFile(event), DesktopActionError);
}

} // namespace

} // namespace morvane
