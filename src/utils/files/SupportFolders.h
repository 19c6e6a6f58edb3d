#pragma once

#include <QString>

namespace morvane {

// Where the application keeps what it keeps. XDG variables decide; a profile folder given at start takes
// their place as a whole, so that a trial run touches nothing else.
struct SupportFolders {
    QString data;       // application-support directory: stores and sealed files live in folders below it
    QString config;     // the settings file
    QString runtime;    // the lock of the running instance; emptied by the desktop at logout
    QString state = {}; // what is no data of the person's: reports of crashes, where the window stood

    // From XDG_DATA_HOME, XDG_CONFIG_HOME, XDG_RUNTIME_DIR and XDG_STATE_HOME with their usual defaults.
    static SupportFolders standard();

    // Everything below one folder.
    static SupportFolders inProfile(const QString &folder);
};

} // namespace morvane
