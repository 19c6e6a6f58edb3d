#pragma once

#include "FakeViewModels.h"
#include "support/WindowDriver.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <gtest/gtest.h>

#include <functional>

namespace morvane {

// The real window on view models under the test's control, shown off screen and driven by real key and
// pointer events. Whatever QML complains about while a test runs fails the test.
class WindowFixture : public testing::Test {
protected:
    WindowFixture();
    ~WindowFixture() override;

    void SetUp() override { load(); }
    void TearDown() override;

    void load();

    [[nodiscard]] static QList<QQuickItem *> allItems(QQuickWindow *window)
    {
        return WindowDriver::allItems(window);
    }
    [[nodiscard]] QList<QQuickItem *> allItems() const { return allItems(m_window); }
    [[nodiscard]] static QQuickItem *item(QQuickWindow *window, const QString &objectName)
    {
        return WindowDriver::anyItem(window, objectName);
    }
    [[nodiscard]] QQuickItem *item(const QString &objectName) const { return item(m_window, objectName); }
    // The settings window; opened if it isn't yet.
    [[nodiscard]] QQuickWindow *settingsWindow() { return WindowDriver::settingsWindow(m_window); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        WindowDriver::press(m_window, key, modifiers);
    }
    static void press(QQuickWindow *window, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        WindowDriver::press(window, key, modifiers);
    }
    static void type(QQuickWindow *window, const QString &text) { WindowDriver::type(window, text); }
    void type(const QString &text) { type(m_window, text); }
    static void click(QQuickItem *item) { WindowDriver::click(item); }
    static bool eventually(const std::function<bool()> &condition)
    {
        return WindowDriver::eventually(condition);
    }
    static void settle() { WindowDriver::settle(); }
    // The name that assistive technology reads.
    [[nodiscard]] static QString accessibleName(QQuickItem *item);

    FakeChat m_chat;
    FakeConversationList m_conversations;
    FakeSearch m_search;
    FakeSources m_sources;
    FakeInstructions m_instructions;
    FakeReceipts m_receipts;
    FakeAbilities m_abilities;
    FakeSearchKey m_searchKey;
    FakeMemory m_memory;
    FakeAISettings m_aiSettings;
    FakeNetworkLedger m_ledger;
    FakeShell m_shell;
    FakeCompanion m_companion;
    QStringList m_complaints;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QQuickWindow *m_window = nullptr;
};

} // namespace morvane
