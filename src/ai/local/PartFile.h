#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

// A file that is being fetched, and goes on after a break where it stopped. One thread at a time; what a
// stopped download still writes has its own place in the file, and is right there.
class PartFile {
public:
    // Opens it, or makes it with its folders; only its owner may read it. Throws FileError.
    explicit PartFile(const QString &path);
    ~PartFile();
    PartFile(const PartFile &) = delete;
    PartFile &operator=(const PartFile &) = delete;

    // Throws FileError; one with ENOSPC, or EDQUOT, when the disk is full. What had room is there then.
    void write(const QByteArray &bytes, qint64 offset);
    void truncate();
    void sync();

    // Bytes of the file at the path; 0 when there is none.
    [[nodiscard]] static qint64 size(const QString &path);

private:
    int m_descriptor;
};

} // namespace morvane
