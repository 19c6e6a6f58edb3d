#pragma once

#include "app/AppState.h"
#include "app/MainWindowController.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "security/InMemoryKeychainService.h"
#include "support/ModelServer.h"

#include <QQuickWindow>
#include <QTemporaryDir>

#include <memory>

namespace morvane {

// The whole application on a throw-away profile and the practice server, with its real window, for taking
// pictures.
class Studio {
public:
    // `folder` gets the pictures; `suffix` is part of each file's name.
    Studio(QString folder, QString suffix, bool dark);
    ~Studio();
    Studio(const Studio &) = delete;
    Studio &operator=(const Studio &) = delete;

    [[nodiscard]] AppState &state() { return *m_state; }
    [[nodiscard]] QQuickWindow *window() { return m_window->window(); }
    [[nodiscard]] const ModelServer &server() const { return m_server; }

    // A new chat with another model of the practice server.
    void beginChat(const QString &model);
    void say(const QString &words);
    // A chat of the past, opened from the store: a question and its answer.
    void openChat(const QString &question, const QString &answer);
    // Runs the event loop until the reply is over; throws when it never is.
    void awaitReply();
    void awaitApproval();
    void awaitText(const QString &text);
    // Until each part of `window` that comes softly has come.
    static void awaitParts(QQuickWindow *window);

    // Saves what `window` shows, once it stands still.
    void take(const QString &name, QQuickWindow *window);
    void take(const QString &name) { take(name, window()); }

private:
    QString m_folder;
    QString m_suffix;
    QTemporaryDir m_profile;
    SystemClock m_clock;
    InMemoryKeychainService m_keychain;
    ModelServer m_server;
    Work m_work{m_clock};
    std::unique_ptr<AppState> m_state;
    std::unique_ptr<MainWindowController> m_window;
};

} // namespace morvane
