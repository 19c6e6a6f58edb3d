#pragma once

#include "app/AppState.h"
#include "app/MainWindowController.h"
#include "async/Work.h"
#include "security/InMemoryKeychainService.h"
#include "services/ScreenCapturing.h"
#include "support/ModelServer.h"
#include "support/WindowDriver.h"
#include "view_models/chat/ChatViewModel.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace morvane {

// The whole application on a profile of its own, with its real window off screen and the real model server on
// the other side of a socket. Only the keychain stands in, and the time where a test turns it.
class AppFixture : public testing::Test {
protected:
    // The options are those of the model server.
    explicit AppFixture(const QStringList &serverOptions = {});
    // With no model anywhere, and the local runtime that `file` describes (--dev-runtime).
    explicit AppFixture(const QByteArray &file);
    // With the private cloud at `relay`, where this build knows one. The clock outlives the fixture.
    AppFixture(Clock &clock, const DevRelay::Origin &relay);
    ~AppFixture() override;

    // Starts the application, as a new process on the same profile would.
    void start();
    void stop();

    void useModel(const QString &model);

    // Types into the window and presses Return.
    void say(const QString &words);
    [[nodiscard]] bool turnEnds();
    [[nodiscard]] QVariant lastRow(int role) const;
    [[nodiscard]] QString lastText() const;
    [[nodiscard]] ChatViewModel &chat() const { return *state->presentation().chat; }
    [[nodiscard]] QQuickItem *item(const QString &objectName) const;
    [[nodiscard]] QQuickWindow *window() const { return mainWindow->window(); }
    // Once it can be used; null when that never comes.
    [[nodiscard]] QQuickItem *settingsControl(const QString &page, const QString &objectName) const;

    // For a test that watches this process: says how far it has come, and waits to be let go on.
    static void come(const char *stage);

    QTemporaryDir profile;
    SystemClock machineClock;
    Clock &clock{machineClock};
    std::optional<DevRelay::Origin> devRelay;
    VoicePorts voice;      // of the next start; the desktop has neither ears nor a mouth
    QByteArray devRuntime; // empty: the practice server is the model
    InMemoryKeychainService keychain;
    ModelServer server;
    std::optional<Work> work;
    std::unique_ptr<ScreenCapturing> screen; // of the display that a test started; else null
    std::unique_ptr<AppState> state;
    std::unique_ptr<MainWindowController> mainWindow;
};

} // namespace morvane
