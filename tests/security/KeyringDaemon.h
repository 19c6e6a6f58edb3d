#pragma once

#include <QDBusServiceWatcher>
#include <QProcess>
#include <QTemporaryDir>

namespace morvane {

// A real keyring daemon on the bus of the environment, with files of its own that live as long as this
// object, and a person at its prompts who does what the test says.
//
// One at a time; GUI thread.
class KeyringDaemon {
public:
    enum class Start { Unlocked, Locked };

    static constexpr const char *password = "correct horse";

    KeyringDaemon();
    ~KeyringDaemon();
    KeyringDaemon(const KeyringDaemon &) = delete;
    KeyringDaemon &operator=(const KeyringDaemon &) = delete;

    // The first unlocked start makes the keyring. Throws std::runtime_error when nothing answers.
    void start(Start how);
    void stop();

    // As the desktop's own "lock keyring" does.
    void lock();

    // What the person does at the next prompt.
    void expectPassword();
    void expectDismissal();
    // They are not in a hurry.
    void setDelay(unsigned milliseconds);

private:
    QTemporaryDir m_home;
    QDBusServiceWatcher m_watcher; // wakes the event loop when the daemon comes or goes
    QProcess m_process;
    QByteArray m_prompter; // bus name of the prompts' other end
};

} // namespace morvane
