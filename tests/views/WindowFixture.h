#pragma once

#include "ai/local/LocalRuntimeValues.h"
#include "app/AppState.h"
#include "async/Work.h"
#include "attestation/ProofLedger.h"
#include "security/InMemoryKeychainService.h"
#include "support/ManualClock.h"
#include "support/WindowDriver.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

namespace morvane {

class ChatMessage;
class MainWindowController;
class ScriptedProvider;

// The real window of the real application, on a profile of its own, shown off screen and driven by real key
// and pointer events. Its keychain is in memory, its clock stands still and its model says what the test
// gives it. Whatever QML complains about while a test runs fails the test.
class WindowFixture : public testing::Test {
protected:
    WindowFixture();
    ~WindowFixture() override;

    void SetUp() override { load(); }
    void TearDown() override;

    // Starts the application anew on its profile, without a window.
    void start();
    void load();

    // A saved chat, listed above the former ones. Its last message is the model's and becomes what `finish`
    // makes of it; without messages it is empty.
    QString addChat(const QString &title, const QStringList &messages = {},
                    const std::function<void(ChatMessage &last)> &finish = {});
    // A saved chat of one question and its reply, opened.
    void showReply(const QString &text, const std::function<void(ChatMessage &reply)> &finish = {});

    // Asks something, and lets the model begin to answer, go on, and end.
    void send(const QString &words = QStringLiteral("Question"));
    void asking(const std::function<void()> &action); // that begins a turn
    void stream(const QString &piece);
    void endReply();
    void failReply(std::exception_ptr error);
    // The row that a provider leaves of the newest turn.
    void leaveProof(ProofLedger::Entry row);
    // Whether the newest turn was stopped.
    [[nodiscard]] bool isAbandoned() const;

    // A tool asks the person to search the web for those words; `answers` tells what became of each request.
    void askToSearch(const QString &words, bool offersChatWideYes);

    [[nodiscard]] QList<QQuickItem *> allItems() const { return WindowDriver::allItems(m_window); }
    // Hidden or not; null when there is none.
    [[nodiscard]] QQuickItem *item(const QString &objectName) const
    {
        return WindowDriver::anyItem(m_window, objectName);
    }
    // The first one of a window that is drawn and that assistive technology knows by this name.
    [[nodiscard]] QQuickItem *named(const QString &name) const;
    // Whether these words are drawn anywhere in a window.
    [[nodiscard]] static bool shows(QQuickWindow *window, const QString &text);
    [[nodiscard]] bool shows(const QString &text) const { return shows(m_window, text); }
    // Whether the item that has the keyboard has this name.
    [[nodiscard]] static bool isAt(QQuickWindow *window, const QString &name);
    // The settings window; opened if it isn't yet.
    [[nodiscard]] QQuickWindow *settingsWindow() { return WindowDriver::settingsWindow(m_window); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        WindowDriver::press(m_window, key, modifiers);
    }
    void type(const QString &text) { WindowDriver::type(m_window, text); }
    static void click(QQuickItem *item) { WindowDriver::click(item); }
    static bool eventually(const std::function<bool()> &condition)
    {
        return WindowDriver::eventually(condition);
    }
    static void settle() { WindowDriver::settle(); }
    // The name that assistive technology reads.
    [[nodiscard]] static QString accessibleName(QQuickItem *item);
    [[nodiscard]] static QString clipboard();
    // The texts of the open chat, one each.
    [[nodiscard]] QStringList transcript() const;

    QTemporaryDir m_profile;
    VoicePorts m_voice;                      // of the next start; the desktop has neither ears nor a mouth
    DesktopPorts m_desktop;                  // of the next start; nothing of it is there
    GlobalShortcutBinding *m_keys = nullptr; // of the next start; the desktop has no keys to give
    LocalRuntimeValues m_runtime;            // of the next start; nobody answers and nothing can be installed
    ManualClock m_clock;
    InMemoryKeychainService m_keychain;
    bool m_isKeyWrapped = false; // as the next start finds it
    std::optional<Work> m_work;
    std::unique_ptr<AppState> m_app;
    QStringList m_openedLinks;
    QStringList m_answers;
    QQuickWindow *m_window = nullptr;

private:
    void close();

    std::shared_ptr<ScriptedProvider> m_provider;
    std::unique_ptr<MainWindowController> m_controller;
    QStringList m_complaints;
};

} // namespace morvane
