#pragma once

#include "support/RuntimeHost.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

namespace morvane {

// The press of local AI in a process of its own, on a profile and a home of its own, against the real release
// host and the runtime that it gives out.
class LocalPressFixture : public testing::Test {
protected:
    LocalPressFixture();
    ~LocalPressFixture() override;

    // Another host, for another archive. What was installed stays.
    void useHost(const QString &archive);

    // Starts the program. With a size, the profile is a disk of its own of so many bytes; false where this
    // system lets nobody have one.
    void start(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    [[nodiscard]] bool startOnDisk(int size);
    void tell(const QByteArray &words);

    // Waits for a line that begins so, and gives it; empty when the program has ended before.
    QByteArray comes(const QByteArray &beginning);
    // Presses, and gives the line that it ends with: "ready MODEL" or "failed WORDS".
    QByteArray press();

    void kill();
    // Ends the program as a person does.
    void end();

    // Waits until the runtime noted such an event so often.
    void awaitJournal(const QString &event, std::size_t count);

    // Waits until no process is left whose program lies in the profile.
    void awaitAllEnded() const;
    // Waits until some of the archive has been written, and gives how much.
    [[nodiscard]] qint64 awaitPart() const;
    // No runtime ever ran but a whole one, and none that wasn't confined as it should be.
    void expectConfinedRuns() const;
    [[nodiscard]] std::size_t downloads();                    // requests to the storage
    [[nodiscard]] QString managed(const QString &name) const; // below the folder of what is managed

    QTemporaryDir profile;
    std::optional<RuntimeHost> host;
    QProcess program;

private:
    void run(const QString &command, const QStringList &arguments, QProcessEnvironment environment);
    [[nodiscard]] QStringList words() const;
};

} // namespace morvane
