#include "memory/MemoryStore.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "support/ManualClock.h"
#include "view_models/chat/NoteReceiptsModel.h"
#include "view_models/settings/MemoryViewModel.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class NotesTest : public testing::Test {
protected:
    static QStringList textsOf(const QAbstractItemModel &model, int role)
    {
        QStringList texts;
        for (int row = 0; row < model.rowCount(); ++row)
            texts += model.index(row, 0).data(role).toString();
        return texts;
    }
    [[nodiscard]] QStringList notes() const { return textsOf(list, MemoryViewModel::NoteRole); }
    [[nodiscard]] QString idOf(int row) const
    {
        return list.index(row, 0).data(MemoryViewModel::FactIdRole).toString();
    }

    QTemporaryDir folder;
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    ManualClock clock;
    MemoryStore memory{settings, vault, clock, folder.path()};
    MemoryViewModel list{memory};
    NoteReceiptsModel receipts{memory};
    QAbstractItemModelTester listTester{&list, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(NotesTest, TheLatestNoteStandsFirstAndEditsReachTheFile)
{
    memory.remember(u"Likes tea."_s);
    memory.remember(u"Lives in Oslo."_s);
    EXPECT_EQ(notes(), QStringList({u"Lives in Oslo."_s, u"Likes tea."_s}));
    list.update(idOf(1), u"Likes rooibos."_s);
    list.update(idOf(0), u"  "_s);
    list.update(u"not an id"_s, u"x"_s);
    const MemoryStore again(settings, vault, clock, folder.path());
    EXPECT_EQ(again.facts().front().text, u"Likes rooibos."_s);
    EXPECT_EQ(notes(), QStringList({u"Lives in Oslo."_s, u"Likes rooibos."_s}));
    list.remove(idOf(0));
    list.clear();
    EXPECT_EQ(list.rowCount(), 0);
}

TEST_F(NotesTest, AReceiptTakesItsNoteBackAndOneThatIsWavedAwayKeepsIt)
{
    memory.remember(u"Likes tea."_s);
    memory.remember(u"Lives in Oslo."_s);
    EXPECT_EQ(textsOf(receipts, NoteReceiptsModel::NoteRole),
              QStringList({u"Likes tea."_s, u"Lives in Oslo."_s}));
    const auto id = [this] { return receipts.index(0, 0).data(NoteReceiptsModel::ReceiptIdRole).toString(); };
    receipts.undo(id());
    receipts.dismiss(id());
    EXPECT_EQ(receipts.rowCount(), 0);
    EXPECT_EQ(notes(), QStringList(u"Lives in Oslo."_s));
}

TEST_F(NotesTest, NotesOfALostKeySaySoUntilTheyAreCleared)
{
    memory.remember(u"Likes tea."_s);
    InMemoryKeychainService otherKeys;
    const LocalDataVault otherVault(otherKeys);
    MemoryStore sealed(settings, otherVault, clock, folder.path());
    MemoryViewModel page(sealed);
    EXPECT_TRUE(page.problem().contains(u"a key this Mac no longer has"_s));
    page.clear();
    EXPECT_EQ(page.problem(), QString());
}

} // namespace

} // namespace morvane
