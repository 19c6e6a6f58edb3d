#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

// What is asked of the application from outside its window: by a command line, the desktop or the tray.
struct AppRequest {
    enum class Chat { open, fresh, ghost };

    bool showsWindow = true;
    Chat chat = Chat::open; // where the rest belongs: the chat that is open, a new one, or a new Ghost chat
    QString chatID = {};    // opens this one instead; of one that is gone nothing happens
    QStringList files = {}; // to attach, as absolute paths
    QString words = {};     // for the composer
    // The words are sent as well. Only a command line says so, since that is the person; another program
    // must never speak in their name.
    bool sends = false;
    bool looksAtScreen = false;
    QString activationToken = {}; // with which the desktop lets the window come to the front

    friend bool operator==(const AppRequest &, const AppRequest &) = default;
};

} // namespace morvane
