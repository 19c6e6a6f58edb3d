#pragma once

#include "utils/files/SupportFolders.h"

#include <QObject>

#include <optional>

namespace morvane {

class LocalDataVault;
class SettingsStore;

// The person's own standing instructions, in one sealed file. GUI thread.
//
// A file that can't be opened is left alone until reset(), since its key may come back: turns run on the
// default prompt, and what is set meanwhile stays in memory. Failures are logged; nothing is thrown.
class SystemPromptStore final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString prompt READ prompt WRITE setPrompt NOTIFY promptChanged)
    Q_PROPERTY(bool loadFailed READ loadFailed NOTIFY loadFailedChanged)

public:
    // Reads the file, then takes over what older builds kept in the settings. `settings` and `vault` outlive
    // the store. Without a path it is the file of the standard folders.
    SystemPromptStore(SettingsStore &settings, const LocalDataVault &vault,
                      const std::optional<QString> &filePath = {}, QObject *parent = nullptr);

    [[nodiscard]] static QString path(const SupportFolders &folders);

    // Reads the file anew. While the vault is locked nothing is read; call this once it is unlocked.
    void load();

    // For a lock: lets go of the text; load() brings it back from the file.
    void conceal();

    [[nodiscard]] const QString &prompt() const { return m_prompt; }

    // Saves at once.
    void setPrompt(const QString &prompt);

    // The instructions for a turn: the person's, or the default prompt.
    [[nodiscard]] QString effectivePrompt() const;

    // The file exists and can't be opened.
    [[nodiscard]] bool loadFailed() const { return m_loadFailed; }

    // What the settings page says then.
    [[nodiscard]] static QString loadFailedMessage();

    // Forgets the instructions, and those in a file that can't be opened.
    void reset();

Q_SIGNALS:
    void promptChanged();
    void loadFailedChanged();

private:
    [[nodiscard]] std::optional<QString> stored() const;
    [[nodiscard]] bool save() const;
    void takeOverFormerInstructions();
    void hold(const QString &prompt);
    void setLoadFailed(bool failed);

    SettingsStore &m_settings;
    const LocalDataVault &m_vault;
    QString m_filePath;
    QString m_prompt;
    bool m_loadFailed = false;
};

} // namespace morvane
