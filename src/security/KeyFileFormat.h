#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace morvane {

// Text of the file that stands in for a keyring. A first line, one line for each secret, a last line that
// tells a whole file from a cut one:
//
//   morvane-keys 1
//   <service> <account> <value>      each in standard base64
//   end
namespace KeyFileFormat {

struct Entry {
    QString service;
    QString account;
    QByteArray value;

    bool operator==(const Entry &) const = default;
};

// Nothing unless the whole file is well formed, names included, and no secret stands in it twice.
[[nodiscard]] std::optional<std::vector<Entry>> parse(QByteArrayView contents);

[[nodiscard]] QByteArray print(const std::vector<Entry> &entries);

} // namespace KeyFileFormat

} // namespace morvane
