#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace morvane::TestArchive {

enum class Kind { file, program, setUserId, folder, link, hardLink, device };

struct Entry {
    Kind kind = Kind::file;
    QByteArray name;
    QByteArray content; // of a file, or where a link leads
    qint64 hole = 0;    // bytes of nothing that a file is long
};

// A tar in zstd, as it is written and whatever it holds.
[[nodiscard]] QByteArray of(const std::vector<Entry> &entries);

void write(const QString &path, const QByteArray &bytes);
[[nodiscard]] QByteArray read(const QString &path);
[[nodiscard]] QString digestOf(const QByteArray &bytes);

} // namespace morvane::TestArchive
