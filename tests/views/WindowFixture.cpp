#include "WindowFixture.h"

#include "view_models/blocks/ReplyBlocksModel.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QStringList *complaints = nullptr;
QtMessageHandler formerHandler = nullptr;

void noteComplaint(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Off screen there is no stack of windows to raise one in.
    const bool counts = type != QtDebugMsg && type != QtInfoMsg && !message.contains("raise()"_L1);
    if (complaints && counts)
        *complaints += message;
    formerHandler(type, context, message);
}

template <typename Fake>
void offer(const char *name)
{
    qmlRegisterUncreatableType<Fake>("Morvane.ViewModels", 1, 0, name, u"made by the test"_s);
}

void offerFakes()
{
    static const bool offered = [] {
        offer<FakeMessageList>("MessageListModel");
        offer<FakeConversationList>("ConversationListModel");
        offer<FakeSearch>("HistorySearchModel");
        offer<FakeSources>("SourceMenuViewModel");
        offer<FakeServerModels>("ServerModelsViewModel");
        offer<FakeInstructions>("InstructionsViewModel");
        offer<FakeReceipts>("NoteReceiptsModel");
        offer<FakeAbilities>("AbilitiesViewModel");
        offer<FakeSearchKey>("SearchKeyViewModel");
        offer<FakeMemory>("MemoryViewModel");
        offer<FakeNetworkLedger>("NetworkLedgerViewModel");
        offer<FakeChat>("ChatViewModel");
        offer<FakeAISettings>("AISettingsViewModel");
        offer<FakeShell>("ShellViewModel");
        offer<FakeCompanion>("CompanionViewModel");
        qmlRegisterType<ReplyBlocksModel>("Morvane.ViewModels", 1, 0, "ReplyBlocksModel"); // the real one
        qmlRegisterUncreatableMetaObject(Companion::staticMetaObject, "Morvane.ViewModels", 1, 0, "Companion",
                                         u"an enumeration"_s);
        return true;
    }();
    Q_UNUSED(offered)
}

} // namespace

WindowFixture::WindowFixture()
{
    complaints = &m_complaints;
    formerHandler = qInstallMessageHandler(noteComplaint);
    offerFakes();
}

WindowFixture::~WindowFixture()
{
    m_engine.reset();
    qInstallMessageHandler(formerHandler);
    complaints = nullptr;
}

void WindowFixture::load()
{
    m_engine = std::make_unique<QQmlApplicationEngine>();
    m_engine->addImportPath(u"qrc:/qt/qml"_s);
    m_engine->setInitialProperties({{u"chat"_s, QVariant::fromValue(&m_chat)},
                                    {u"conversations"_s, QVariant::fromValue(&m_conversations)},
                                    {u"search"_s, QVariant::fromValue(&m_search)},
                                    {u"sources"_s, QVariant::fromValue(&m_sources)},
                                    {u"instructions"_s, QVariant::fromValue(&m_instructions)},
                                    {u"receipts"_s, QVariant::fromValue(&m_receipts)},
                                    {u"abilities"_s, QVariant::fromValue(&m_abilities)},
                                    {u"searchKey"_s, QVariant::fromValue(&m_searchKey)},
                                    {u"memory"_s, QVariant::fromValue(&m_memory)},
                                    {u"aiSettings"_s, QVariant::fromValue(&m_aiSettings)},
                                    {u"networkLedger"_s, QVariant::fromValue(&m_ledger)},
                                    {u"shell"_s, QVariant::fromValue(&m_shell)},
                                    {u"companion"_s, QVariant::fromValue(&m_companion)}});
    m_engine->load(QUrl(u"qrc:/qt/qml/Morvane/Main.qml"_s));
    ASSERT_EQ(m_engine->rootObjects().size(), 1);
    m_window = qobject_cast<QQuickWindow *>(m_engine->rootObjects().constFirst());
    ASSERT_NE(m_window, nullptr);
    m_window->show();
    m_window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    settle();
}

void WindowFixture::TearDown()
{
    EXPECT_TRUE(m_complaints.isEmpty()) << m_complaints.join(u'\n').toStdString();
}

QString WindowFixture::accessibleName(QQuickItem *item)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
    return face ? face->text(QAccessible::Name) : QString();
}

} // namespace morvane
