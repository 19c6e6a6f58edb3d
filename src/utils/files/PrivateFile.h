#pragma once

#include <QByteArray>
#include <QLatin1StringView>
#include <QString>

#include <exception>
#include <optional>
#include <string>

namespace morvane {

// A file operation that the system refused. `status` is errno.
class FileError final : public std::exception {
public:
    enum class Operation { CreateFolder, Open, Read, Write, Sync, Rename };

    FileError(Operation operation, int status);

    [[nodiscard]] Operation operation() const { return m_operation; }
    [[nodiscard]] int status() const { return m_status; }
    [[nodiscard]] const char *what() const noexcept override { return m_what.c_str(); }

private:
    Operation m_operation;
    int m_status;
    std::string m_what;
};

// Files that only their owner may read.
namespace PrivateFile {

// Replaces the file as a whole or leaves it as it was, also across a power cut: a neighbour of mode 0600 is
// written and synced, renamed over the file, and the folder is synced. Missing folders are made, mode 0700.
// Throws FileError.
void write(const QString &path, QByteArrayView bytes);

// What the neighbour's name has behind the file's, as a wildcard: one stays when the process is killed.
inline constexpr QLatin1StringView neighbourPattern{".part-??????"};

// Gives a file or folder another place on the same disk, for good: both folders are synced. A missing folder
// at the new place is made. Throws FileError.
void move(const QString &from, const QString &to);

// The whole file, or nothing when there is none. A file above `limit` bytes throws FileError with EFBIG, any
// other failure its errno.
[[nodiscard]] std::optional<QByteArray> read(const QString &path, qsizetype limit);

// Makes the folder and its parents, mode 0700 each that is new. Throws FileError.
void createFolder(const QString &path);

} // namespace PrivateFile

} // namespace morvane
