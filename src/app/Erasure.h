#pragma once

#include "persistence/LocalDataEraser.h"

#include <QLatin1StringView>

namespace morvane {

class KeychainServicing;
class SettingsRepository;

// Deletes all that is kept on this machine, once nothing of it is open any more: first files, then the key
// and the other secrets, then the settings. That it was begun stands in the settings, whose emptying is its
// last step, so that a start after a killed one ends it. No failure stops it: without the key what stays
// can't be read.
namespace Erasure {

inline constexpr QLatin1StringView underwayKey{"eraseAllUnderway.v1"};

struct Secrets {
    int count = 0;
    bool isKeyGone = false; // as the keychain tells when it is asked afterwards
    QString keyFile;        // that still has it; empty when it is the keyring, or gone
};
struct Result {
    LocalDataEraser::Removed files;
    Secrets secrets;
    QString settingsLeft; // path of the settings, where they could not be emptied
};

[[nodiscard]] bool isUnderway(const SupportFolders &folders);
// Reaches the disk before it returns, where the disk takes it.
void begin(SettingsRepository &defaults);

// For a thread of Work: both may wait for other processes.
[[nodiscard]] LocalDataEraser::Removed removeFiles(const SupportFolders &folders);
[[nodiscard]] Secrets removeSecrets(KeychainServicing &keychain, const QString &keyFile);
// The end of it, on the main thread. The path of what would not be emptied; empty for none: the next start
// then does all of it again.
[[nodiscard]] QString emptySettings(const SupportFolders &folders);

// What the person reads afterwards: what was removed, what could not be, and what stays and why. The folder
// of their shortcuts is named where it is there.
[[nodiscard]] QStringList report(const Result &result, const QString &shortcutsFolder);

} // namespace Erasure

} // namespace morvane
