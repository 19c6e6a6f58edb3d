#include "FakeViewModels.h"

#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/NoteReceiptsModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/AbilitiesViewModel.h"
#include "view_models/settings/InstructionsViewModel.h"
#include "view_models/settings/MemoryViewModel.h"
#include "view_models/settings/NetworkLedgerViewModel.h"
#include "view_models/settings/SearchKeyViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"
#include "view_models/sidebar/HistorySearchModel.h"
#include "view_models/sidebar/SourceMenuViewModel.h"

#include <QMetaMethod>
#include <QMetaProperty>

#include <gtest/gtest.h>

namespace morvane {

// The window is tested on fakes, so the fakes must not offer what the real view models don't have.

namespace {

QByteArray typeName(const QMetaProperty &property)
{
    const QByteArray name = property.typeName();
    return name.contains('*') || name.contains("State") ? QByteArray() : name; // differ by design
}

void expectRealHas(const QMetaObject &real, const QMetaObject &fake)
{
    for (int i = fake.superClass()->propertyCount(); i < fake.propertyCount(); ++i) {
        const QMetaProperty wanted = fake.property(i);
        const QMetaProperty found = real.property(real.indexOfProperty(wanted.name()));
        EXPECT_TRUE(found.isValid()) << real.className() << " has no " << wanted.name();
        EXPECT_EQ(typeName(found), typeName(wanted)) << real.className() << "::" << wanted.name();
        EXPECT_TRUE(found.hasNotifySignal() || found.isConstant() || !wanted.hasNotifySignal())
            << wanted.name();
    }
    for (int i = fake.superClass()->methodCount(); i < fake.methodCount(); ++i) {
        const QMetaMethod wanted = fake.method(i);
        EXPECT_GE(real.indexOfMethod(wanted.methodSignature()), 0)
            << real.className() << " has no " << wanted.methodSignature().constData();
    }
}

template <typename Model>
void expectSameRoles(const Model &real, const FakeRows &fake)
{
    const auto names = real.roleNames().values();
    for (const QByteArray &role : fake.roleNames())
        EXPECT_TRUE(names.contains(role)) << role.constData();
    EXPECT_EQ(names.size(), fake.roleNames().size());
}

} // namespace

TEST(FakeViewModelsTest, TheRealViewModelsHaveWhatTheFakesOffer)
{
    expectRealHas(ChatViewModel::staticMetaObject, FakeChat::staticMetaObject);
    expectRealHas(ConversationListModel::staticMetaObject, FakeConversationList::staticMetaObject);
    expectRealHas(AISettingsViewModel::staticMetaObject, FakeAISettings::staticMetaObject);
    expectRealHas(ShellViewModel::staticMetaObject, FakeShell::staticMetaObject);
    expectRealHas(CompanionViewModel::staticMetaObject, FakeCompanion::staticMetaObject);
    expectRealHas(HistorySearchModel::staticMetaObject, FakeSearch::staticMetaObject);
    expectRealHas(ServerModelsViewModel::staticMetaObject, FakeServerModels::staticMetaObject);
    expectRealHas(SourceMenuViewModel::staticMetaObject, FakeSources::staticMetaObject);
    expectRealHas(InstructionsViewModel::staticMetaObject, FakeInstructions::staticMetaObject);
    expectRealHas(NoteReceiptsModel::staticMetaObject, FakeReceipts::staticMetaObject);
    expectRealHas(AbilitiesViewModel::staticMetaObject, FakeAbilities::staticMetaObject);
    expectRealHas(SearchKeyViewModel::staticMetaObject, FakeSearchKey::staticMetaObject);
    expectRealHas(MemoryViewModel::staticMetaObject, FakeMemory::staticMetaObject);
    expectRealHas(NetworkLedgerViewModel::staticMetaObject, FakeNetworkLedger::staticMetaObject);
}

TEST(FakeViewModelsTest, TheRealListsHaveTheRolesOfTheFakes)
{
    ManualClock clock;
    NetworkLedger ledger;
    expectSameRoles(MessageListModel(clock), FakeMessageList());
    expectSameRoles(NetworkLedgerViewModel(ledger, clock), FakeNetworkLedger());
}

} // namespace morvane
