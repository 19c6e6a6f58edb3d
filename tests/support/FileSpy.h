#pragma once

#include <QMutex>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <cerrno>
#include <optional>

namespace morvane {

// Notes what this process does to the files of one folder below Qt and SQLite, in order: that a file was
// synced before it took another's place can't be read from what is on the disk afterwards.
//
// One at a time; the calls may come from any thread.
class FileSpy {
public:
    explicit FileSpy(const QString &folder);
    ~FileSpy();
    FileSpy(const FileSpy &) = delete;
    FileSpy &operator=(const FileSpy &) = delete;

    // "write a", "sync a", "rename a b", "unlink a", oldest first; names are relative to the folder, which
    // is "." itself. Writes that follow one another in one file are one step.
    [[nodiscard]] QStringList steps() const;

    // Steps that begin so, a regular expression, fail with `status` from now on: "sync", "rename a".
    void refuse(const QString &beginning, int status = EIO);

    [[nodiscard]] int status() const;

    // The process is killed at its so manieth call from now on that would change a file; with `verbs`, that
    // is one of those steps.
    void killAt(int call, const QStringList &verbs = {});

    // For the wrapped calls: notes the step, and says whether it is refused.
    [[nodiscard]] bool note(const char *verb, const QString &path, const QString &target = {});

private:
    [[nodiscard]] std::optional<QString> nameIn(const QString &path) const;

    QString m_folder;
    mutable QMutex m_mutex;
    QStringList m_steps;          // guarded by m_mutex
    QRegularExpression m_refused; // guarded by m_mutex; empty: none
    int m_status = EIO;           // guarded by m_mutex
    int m_callsLeft = 0;          // guarded by m_mutex; none: never killed
    QStringList m_deadlyVerbs;    // guarded by m_mutex; none: all
};

} // namespace morvane
