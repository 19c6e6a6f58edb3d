#include "TestArchive.h"

#include "utils/bytes/Hex.h"

#include <QCryptographicHash>
#include <QFile>

#include <archive.h>
#include <archive_entry.h>

namespace morvane {

namespace {

ssize_t append(archive * /*writer*/, void *target, const void *bytes, std::size_t size)
{
    static_cast<QByteArray *>(target)->append(static_cast<const char *>(bytes), static_cast<qsizetype>(size));
    return static_cast<ssize_t>(size);
}

void describe(archive_entry *entry, const TestArchive::Entry &wanted)
{
    using TestArchive::Kind;
    const bool isFile = wanted.kind <= Kind::setUserId;
    archive_entry_set_pathname(entry, wanted.name.constData());
    archive_entry_set_filetype(entry, wanted.kind == Kind::folder   ? AE_IFDIR
                                      : wanted.kind == Kind::link   ? AE_IFLNK
                                      : wanted.kind == Kind::device ? AE_IFCHR
                                                                    : AE_IFREG);
    archive_entry_set_perm(entry, wanted.kind == Kind::setUserId ? 06755
                                  : wanted.kind == Kind::file    ? 0666
                                                                 : 0755);
    archive_entry_set_size(entry, isFile ? wanted.content.size() + wanted.hole : 0);
    if (wanted.hole > 0) {
        archive_entry_sparse_add_entry(entry, wanted.hole, wanted.content.size());
    }
    if (wanted.kind == Kind::link)
        archive_entry_set_symlink(entry, wanted.content.constData());
    if (wanted.kind == Kind::hardLink)
        archive_entry_set_hardlink(entry, wanted.content.constData());
}

} // namespace

QByteArray TestArchive::of(const std::vector<Entry> &entries)
{
    QByteArray bytes;
    archive *const writer = archive_write_new();
    archive_write_set_format_pax(writer);
    archive_write_add_filter_zstd(writer);
    archive_write_set_bytes_in_last_block(writer, 1); // no padding behind the compressed bytes
    archive_write_open(writer, &bytes, nullptr, &append, nullptr);
    for (const Entry &wanted : entries) {
        archive_entry *const entry = archive_entry_new();
        describe(entry, wanted);
        archive_write_header(writer, entry);
        if (wanted.hole > 0) // the tar holds only what is behind it
            archive_write_data(writer, QByteArray(wanted.hole, '\0').constData(),
                               static_cast<std::size_t>(wanted.hole));
        if (wanted.kind <= Kind::setUserId)
            archive_write_data(writer, wanted.content.constData(),
                               static_cast<std::size_t>(wanted.content.size()));
        archive_entry_free(entry);
    }
    archive_write_close(writer);
    archive_write_free(writer);
    return bytes;
}

void TestArchive::write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("a test's file can't be written");
}

QByteArray TestArchive::read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString TestArchive::digestOf(const QByteArray &bytes)
{
    return Hex::encode(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
}

} // namespace morvane
