// What Settings > Abilities and the bar above the composer say of the desktop.

#include "memory/MemoryStore.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "services/DesktopActionError.h"
#include "support/ManualClock.h"
#include "view_models/chat/ReceiptsModel.h"
#include "view_models/settings/CalendarsViewModel.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class FakeCalendars final : public CalendarStoring {
public:
    QCoro::Task<std::optional<std::vector<Calendar>>> calendars(std::stop_token) override
    {
        if (isDenied)
            throw DesktopActionError(DesktopActionError::Plain::calendarAccessDenied);
        co_return std::optional<std::vector<Calendar>>(all);
    }
    QCoro::Task<std::optional<Place>> add(Event, std::optional<QString>, std::stop_token) override
    {
        co_return std::nullopt;
    }
    QCoro::Task<> remove(Place place, std::stop_token) override
    {
        removed += place.eventID;
        co_return;
    }
    QString writeFile(const Event &) override { return {}; }

    std::optional<std::vector<Calendar>> all;
    bool isDenied = false;
    QStringList removed;
};

class DesktopSettingsTest : public testing::Test {
protected:
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    FakeCalendars calendars;
};

TEST_F(DesktopSettingsTest, ATestSaysWhatAnswersAndOffersTheCalendars)
{
    CalendarsViewModel model(settings, &calendars);
    EXPECT_TRUE(model.names().isEmpty());
    model.test();
    EXPECT_TRUE(model.message().startsWith(u"No calendar service answers here."_s));
    calendars.isDenied = true;
    model.test();
    EXPECT_TRUE(model.message().startsWith(u"I don't have permission to add calendar events. Turn on "_s));
    EXPECT_FALSE(model.worked());
    calendars.isDenied = false;
    calendars.all = {{{u"a"_s, u"Home"_s, false}, {u"b"_s, u"Work"_s, true}}};
    model.test();
    EXPECT_TRUE(model.worked());
    EXPECT_EQ(model.names(), QStringList({u"The default calendar (Work)"_s, u"Home"_s, u"Work"_s}));
    EXPECT_EQ(model.chosen(), 0);
    model.choose(1);
    EXPECT_EQ(settings.eventCalendarID(), u"a"_s);
    EXPECT_EQ(model.chosen(), 1);
    calendars.all->erase(calendars.all->begin());
    model.test();
    EXPECT_FALSE(model.worked());
    EXPECT_EQ(model.chosen(), -1);
    model.choose(0);
    EXPECT_EQ(settings.eventCalendarID(), std::nullopt);
}

TEST_F(DesktopSettingsTest, AnAddedEventStandsInItsChatUntilItIsTakenBack)
{
    ManualClock clock;
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    MemoryStore memory{settings, vault, clock, QString()};
    EventReceipts events{calendars};
    ReceiptsModel model(memory, &events);
    model.setChat(u"chat:A"_s);
    memory.remember(u"Likes tea."_s, u"chat:A"_s);
    for (const auto &chat : {u"chat:A"_s, u"chat:B"_s})
        events.keep({QUuid::createUuid(), u"Lunch"_s, u"1 PM"_s, chat, {u"c"_s, u"Home"_s, u"in "_s + chat}});
    ASSERT_EQ(model.rowCount(), 2);
    const QModelIndex row = model.index(1);
    EXPECT_EQ(model.data(row, ReceiptsModel::NoteRole), u"Lunch · 1 PM"_s);
    EXPECT_TRUE(model.data(row, ReceiptsModel::IsEventRole).toBool());
    model.undo(model.data(row, ReceiptsModel::ReceiptIdRole).toString());
    EXPECT_EQ(calendars.removed, QStringList(u"in chat:A"_s));
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_FALSE(model.data(model.index(0), ReceiptsModel::IsEventRole).toBool());
    EXPECT_EQ(memory.facts().size(), 1U);
}

} // namespace

} // namespace morvane
