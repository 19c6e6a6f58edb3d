#include "WindowFixture.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)

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
        offer<FakeNetworkLedger>("NetworkLedgerViewModel");
        offer<FakeChat>("ChatViewModel");
        offer<FakeAISettings>("AISettingsViewModel");
        offer<FakeShell>("ShellViewModel");
        offer<FakeCompanion>("CompanionViewModel");
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

QList<QQuickItem *> WindowFixture::allItems(QQuickWindow *window)
{
    QList<QQuickItem *> items{window->contentItem()};
    for (qsizetype i = 0; i < items.size(); ++i)
        items += items.at(i)->childItems();
    return items;
}

QQuickItem *WindowFixture::item(QQuickWindow *window, const QString &objectName)
{
    const auto items = allItems(window);
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](QQuickItem *item) { return item->objectName() == objectName; });
    return found == items.end() ? nullptr : *found;
}

QQuickWindow *WindowFixture::settingsWindow()
{
    const auto others = QGuiApplication::allWindows();
    for (QWindow *window : others) {
        if (window != m_window && window->title() == "Settings"_L1)
            return qobject_cast<QQuickWindow *>(window);
    }
    press(Qt::Key_Comma, Qt::ControlModifier);
    const bool opened = eventually([] {
        return QGuiApplication::focusWindow() && QGuiApplication::focusWindow()->title() == "Settings"_L1;
    });
    return opened ? qobject_cast<QQuickWindow *>(QGuiApplication::focusWindow()) : nullptr;
}

void WindowFixture::press(int key, Qt::KeyboardModifiers modifiers)
{
    press(m_window, key, modifiers);
}

void WindowFixture::press(QQuickWindow *window, int key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    settle();
}

void WindowFixture::type(QQuickWindow *window, const QString &text)
{
    for (const QChar character : text)
        QTest::keyClick(window, character.toLatin1());
    settle();
}

void WindowFixture::click(QQuickItem *item)
{
    const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
    QTest::mouseClick(item->window(), Qt::LeftButton, Qt::NoModifier, middle.toPoint());
    settle();
}

bool WindowFixture::eventually(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 10'000);
}

void WindowFixture::settle()
{
    QCoreApplication::processEvents();
    const auto windows = QGuiApplication::allWindows();
    for (QWindow *each : windows) {
        auto *window = qobject_cast<QQuickWindow *>(each);
        if (!window || !window->isVisible())
            continue;
        QSignalSpy drawn(window, &QQuickWindow::frameSwapped);
        window->update();
        drawn.wait(2000);
    }
    QCoreApplication::processEvents();
}

QString WindowFixture::accessibleName(QQuickItem *item)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
    return face ? face->text(QAccessible::Name) : QString();
}
