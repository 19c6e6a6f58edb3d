#pragma once

#include "FakeViewModels.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <gtest/gtest.h>

#include <functional>

// The real window on view models under the test's control, shown off screen and driven by real key and
// pointer events. Whatever QML complains about while a test runs fails the test.
class WindowFixture : public testing::Test {
protected:
    WindowFixture();
    ~WindowFixture() override;

    void SetUp() override { load(); }
    void TearDown() override;

    void load();

    // Everything that is drawn in a window, parents before children.
    [[nodiscard]] static QList<QQuickItem *> allItems(QQuickWindow *window);
    [[nodiscard]] QList<QQuickItem *> allItems() const { return allItems(m_window); }
    [[nodiscard]] static QQuickItem *item(QQuickWindow *window, const QString &objectName);
    [[nodiscard]] QQuickItem *item(const QString &objectName) const { return item(m_window, objectName); }
    // The settings window; opened if it isn't yet.
    [[nodiscard]] QQuickWindow *settingsWindow();

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void press(QQuickWindow *window, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void type(QQuickWindow *window, const QString &text);
    void type(const QString &text) { type(m_window, text); }
    static void click(QQuickItem *item);

    // Turns the event loop until the condition holds; false after ten seconds.
    static bool eventually(const std::function<bool()> &condition);
    // Lets what was posted happen and a frame be laid out and drawn.
    static void settle();
    // The name that assistive technology reads.
    [[nodiscard]] static QString accessibleName(QQuickItem *item);

    FakeChat m_chat;
    FakeConversationList m_conversations;
    FakeAISettings m_aiSettings;
    FakeNetworkLedger m_ledger;
    FakeShell m_shell;
    FakeCompanion m_companion;
    QStringList m_complaints;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QQuickWindow *m_window = nullptr;
};
