#pragma once

#include "WindowFigures.h"
#include "app/AppState.h"
#include "app/MainWindowController.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "support/ModelServer.h"
#include "view_models/chat/ChatViewModel.h"

#include <QElapsedTimer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <memory>

namespace morvane {

// Its "NUMBER" is to be counted up.
inline const QString richAnswer =
    QStringLiteral("## Heading NUMBER\n\nSome **strong** words, a [link](https://example.org) and "
                   "`code NUMBER` in a line that wraps.\n\n"
                   "- one NUMBER\n- two\n- three\n\n```cpp\nint main() { return NUMBER; }\n```\n\n| "
                   "a | b |\n|---|---|\n| 1 | NUMBER |\n\n"
                   "```stat\n$NUMBERM | Price | +12%\n```\n");

// The application with its window on a throw-away profile.
class OpenWindow {
public:
    OpenWindow()
    {
        CommandLine commandLine;
        commandLine.profile = m_profile.path();
        m_state = std::make_unique<AppState>(commandLine, Host::test, m_clock,
                                             Secrets{m_keychain, m_keychain}, m_work);
        m_state->storage().settings->setBaseURLString(m_server.baseUrl());
        m_window = std::make_unique<MainWindowController>(m_state->presentation());
        m_state->start();
        m_window->show();
        m_window->window()->requestActivate();
        turnFor(500);
    }
    ~OpenWindow() { m_state->willTerminate(); }

    [[nodiscard]] AppState &state() { return *m_state; }
    [[nodiscard]] Clock &clock() { return m_clock; }
    [[nodiscard]] QQuickWindow *window() { return m_window->window(); }
    [[nodiscard]] QQuickItem *item(const QString &name) { return window()->findChild<QQuickItem *>(name); }
    [[nodiscard]] QQuickItem *messages() { return item(QStringLiteral("messages")); }
    // The id of the chat.
    QString openFilled(int messages, const QString &text)
    {
        fill(*m_state->storage().repository, *m_state->presentation().chat->conversation(), m_clock, messages,
             text);
        const QString id = m_state->presentation().chat->conversationId();
        m_state->presentation().chat->newConversation();
        m_state->presentation().chat->open(id);
        turnFor(500);
        return id;
    }
    static void turnFor(int milliseconds)
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < milliseconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }

private:
    QTemporaryDir m_profile;
    SystemClock m_clock;
    InMemoryKeychainService m_keychain;
    ModelServer m_server;
    Work m_work{m_clock};
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<MainWindowController> m_window;
};

} // namespace morvane
