#include "ArchiveWriter.h"

#include <archive.h>
#include <archive_entry.h>

#include <stdexcept>
#include <sys/sysmacros.h>

namespace morvane {

namespace {

la_ssize_t append(archive *, void *bytes, const void *data, std::size_t size)
{
    static_cast<QByteArray *>(bytes)->append(static_cast<const char *>(data), static_cast<qsizetype>(size));
    return static_cast<la_ssize_t>(size);
}

} // namespace

ArchiveWriter::ArchiveWriter()
    : m_archive(archive_write_new(), archive_write_free)
{
    check(archive_write_add_filter_zstd(m_archive.get()));
    check(archive_write_set_filter_option(m_archive.get(), "zstd", "compression-level", "1"));
    check(archive_write_set_format_pax_restricted(m_archive.get()));
    check(archive_write_set_bytes_in_last_block(m_archive.get(), 1)); // no zeros behind the compressed frame
    check(archive_write_open(m_archive.get(), &m_bytes, nullptr, append, nullptr));
}

void ArchiveWriter::addFolder(const QByteArray &path, mode_t permissions)
{
    add(entry(path, AE_IFDIR, permissions));
}

void ArchiveWriter::addFile(const QByteArray &path, const QByteArray &contents, mode_t permissions)
{
    const Entry file = entry(path, AE_IFREG, permissions);
    archive_entry_set_size(file.get(), contents.size());
    add(file, contents);
}

void ArchiveWriter::addSymbolicLink(const QByteArray &path, const QByteArray &target)
{
    const Entry link = entry(path, AE_IFLNK, 0777);
    archive_entry_set_symlink(link.get(), target.constData());
    add(link);
}

void ArchiveWriter::addHardLink(const QByteArray &path, const QByteArray &target)
{
    const Entry link = entry(path, AE_IFREG, 0644);
    archive_entry_set_hardlink(link.get(), target.constData());
    add(link);
}

void ArchiveWriter::addPipe(const QByteArray &path)
{
    add(entry(path, AE_IFIFO, 0644));
}

void ArchiveWriter::addDevice(const QByteArray &path, unsigned major, unsigned minor)
{
    const Entry device = entry(path, AE_IFCHR, 0666);
    archive_entry_set_rdev(device.get(), makedev(major, minor));
    add(device);
}

void ArchiveWriter::addHole(const QByteArray &path, qint64 size)
{
    const Entry file = entry(path, AE_IFREG, 0644);
    archive_entry_set_size(file.get(), size);
    archive_entry_sparse_add_entry(file.get(), size - 1, 1);
    check(archive_write_header(m_archive.get(), file.get()));
    // Of what is written the library keeps the part outside the holes; it counts all of it.
    const QByteArray zeros(1 << 20, 0);
    for (qint64 left = size; left > 0; left -= zeros.size())
        archive_write_data(m_archive.get(), zeros.constData(),
                           static_cast<std::size_t>(std::min<qint64>(left, zeros.size())));
}

QByteArray ArchiveWriter::finish()
{
    check(archive_write_close(m_archive.get()));
    return m_bytes;
}

ArchiveWriter::Entry ArchiveWriter::entry(const QByteArray &path, mode_t kind, mode_t permissions) const
{
    Entry entry(archive_entry_new(), archive_entry_free);
    archive_entry_set_pathname(entry.get(), path.constData());
    archive_entry_set_filetype(entry.get(), kind);
    archive_entry_set_perm(entry.get(), permissions);
    archive_entry_set_mtime(entry.get(), 1'790'000'000, 0);
    return entry;
}

void ArchiveWriter::add(const Entry &entry, const QByteArray &contents)
{
    check(archive_write_header(m_archive.get(), entry.get()));
    if (!contents.isEmpty() && archive_write_data(m_archive.get(), contents.constData(),
                                                  static_cast<std::size_t>(contents.size())) < 0)
        check(ARCHIVE_FATAL);
}

void ArchiveWriter::check(int status) const
{
    if (status != ARCHIVE_OK)
        throw std::runtime_error(archive_error_string(m_archive.get()));
}

} // namespace morvane
