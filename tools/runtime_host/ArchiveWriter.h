#pragma once

#include <QByteArray>

#include <memory>
#include <sys/stat.h>

struct archive;
struct archive_entry;

namespace morvane {

// Writes a zstd-compressed tar into memory, entry by entry, whatever they say. Throws a runtime_error when
// the library won't.
class ArchiveWriter {
public:
    ArchiveWriter();

    void addFolder(const QByteArray &path, mode_t permissions = 0755);
    void addFile(const QByteArray &path, const QByteArray &contents, mode_t permissions = 0644);
    void addSymbolicLink(const QByteArray &path, const QByteArray &target);
    void addHardLink(const QByteArray &path, const QByteArray &target);
    void addPipe(const QByteArray &path);
    void addDevice(const QByteArray &path, unsigned major, unsigned minor);
    // A file of this many bytes (1 at least) that is a hole but for its last one.
    void addHole(const QByteArray &path, qint64 size);

    [[nodiscard]] QByteArray finish();

private:
    using Entry = std::unique_ptr<archive_entry, void (*)(archive_entry *)>;
    [[nodiscard]] Entry entry(const QByteArray &path, mode_t kind, mode_t permissions) const;
    void add(const Entry &entry, const QByteArray &contents = {});
    void check(int status) const;

    QByteArray m_bytes;
    std::unique_ptr<archive, int (*)(archive *)> m_archive;
};

} // namespace morvane
