#pragma once

#include <QString>

#include <stop_token>

namespace morvane {

// SHA-256 of files of any size, for a thread of Work.
namespace FileDigest {

// Lower-case hexadecimal. Read a mebibyte at a time. Throws FileError, and CancelledError when `stop` is
// triggered.
[[nodiscard]] QString sha256(const QString &path, const std::stop_token &stop);

} // namespace FileDigest

} // namespace morvane
