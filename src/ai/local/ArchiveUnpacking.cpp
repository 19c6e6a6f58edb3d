#include "ai/local/ArchiveUnpacking.h"

#include "async/CancelledError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <memory>
#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Failure = ArchiveUnpacking::Failure;
using Reason = Failure::Reason;

namespace {

constexpr std::size_t blockSize = 1 << 16;
constexpr qsizetype longestName = 1'000;
constexpr mode_t programMode = S_IRWXU;
constexpr mode_t fileMode = S_IRUSR | S_IWUSR;

using Reader = std::unique_ptr<archive, decltype(&archive_read_free)>;
using Writer = std::unique_ptr<archive, decltype(&archive_write_free)>;

[[noreturn]] void refuse()
{
    throw Failure(Reason::refused, EPERM);
}

// A warning is no failure: what it is about is what we don't take over anyway.
void require(int result, archive *source)
{
    if (result >= ARCHIVE_WARN)
        return;
    const int code = archive_errno(source);
    const bool isFull = code == ENOSPC || code == EDQUOT;
    throw Failure(isFull ? Reason::diskFull : Reason::unreadable, code == 0 ? 1 : code);
}

// A name of the archive as a path below the folder; empty for the folder itself.
QString vetted(const char *bytes)
{
    const QString name = QFile::decodeName(bytes);
    const QString clean = QDir::cleanPath(name);
    const bool isBad = name.isEmpty() || name.size() > longestName || name.startsWith(u'/') ||
                       name.split(u'/').contains(u".."_s) || QFile::encodeName(name) != bytes;
    if (isBad)
        refuse();
    return clean == u"."_s ? QString() : clean;
}

// Whether a symbolic link at `name` leads to a place below the folder.
bool staysInside(const QString &name, const QString &target)
{
    const QString place = QFileInfo(name).path(); // "." at the top
    const QString reached = QDir::cleanPath(place + u'/' + target);
    return !target.isEmpty() && !target.startsWith(u'/') && reached != u".."_s &&
           !reached.startsWith(u"../"_s);
}

class Unpacking {
public:
    Unpacking(const QString &folder, const ArchiveUnpacking::Limits &limits)
        : m_folder(QFileInfo(folder).canonicalFilePath())
        , m_limits(limits)
        , m_reader(archive_read_new(), &archive_read_free)
        , m_writer(archive_write_disk_new(), &archive_write_free)
    {
        if (!m_reader || !m_writer || m_folder.isEmpty())
            throw Failure(Reason::unreadable, ENOENT);
        archive_read_support_filter_zstd(m_reader.get());
        archive_read_support_filter_gzip(m_reader.get());
        archive_read_support_format_tar(m_reader.get());
        // No owners, times, attributes, lists or set-id bits: nothing that isn't named here.
        archive_write_disk_set_options(m_writer.get(),
                                       ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NODOTDOT |
                                           ARCHIVE_EXTRACT_NO_OVERWRITE | ARCHIVE_EXTRACT_PERM);
    }

    void run(const QString &archive, const std::stop_token &stop)
    {
        require(archive_read_open_filename(m_reader.get(), QFile::encodeName(archive).constData(), blockSize),
                m_reader.get());
        int entries = 0;
        while (archive_entry *const entry = next()) {
            throwIfStopped(stop);
            if (++entries > m_limits.entries)
                refuse();
            if (const QString name = vetted(archive_entry_pathname(entry)); !name.isEmpty())
                take(name, entry, stop);
        }
        require(archive_write_close(m_writer.get()), m_writer.get());
        if (entries == 0)
            throw Failure(Reason::unreadable, ENODATA);
    }

private:
    archive_entry *next()
    {
        archive_entry *entry = nullptr;
        const int result = archive_read_next_header(m_reader.get(), &entry);
        if (result == ARCHIVE_EOF)
            return nullptr;
        require(result, m_reader.get());
        if (archive_entry_pathname(entry) == nullptr)
            refuse();
        return entry;
    }

    void take(const QString &name, archive_entry *entry, const std::stop_token &stop)
    {
        const auto type = archive_entry_filetype(entry);
        const bool isFolder = type == AE_IFDIR;
        if (!isFolder && m_names.contains(name))
            refuse();
        m_names.insert(name);
        if (archive_entry_hardlink(entry) != nullptr)
            vetHardLink(entry);
        else if (type == AE_IFLNK)
            vetLink(name, entry);
        else if (!isFolder && type != AE_IFREG)
            refuse();
        const bool isProgram = isFolder || (archive_entry_perm(entry) & S_IXUSR) != 0;
        archive_entry_set_perm(entry, isProgram ? programMode : fileMode);
        archive_entry_set_pathname(entry, QFile::encodeName(m_folder + u'/' + name).constData());
        if (archive_entry_size_is_set(entry) != 0 && archive_entry_size(entry) > m_limits.bytes - m_bytes)
            refuse();
        require(archive_write_header(m_writer.get(), entry), m_writer.get());
        if (type == AE_IFREG && archive_entry_hardlink(entry) == nullptr)
            copy(stop);
        require(archive_write_finish_entry(m_writer.get()), m_writer.get());
    }

    void vetLink(const QString &name, archive_entry *entry)
    {
        const char *const target = archive_entry_symlink(entry);
        if (target == nullptr || !staysInside(name, QFile::decodeName(target)))
            refuse();
    }

    // To a file that came out before.
    void vetHardLink(archive_entry *entry)
    {
        const QString target = vetted(archive_entry_hardlink(entry));
        const QString path = m_folder + u'/' + target;
        if (!m_names.contains(target) || QFileInfo(path).isSymLink() || !QFileInfo(path).isFile())
            refuse();
        archive_entry_set_hardlink(entry, QFile::encodeName(path).constData());
    }

    void copy(const std::stop_token &stop)
    {
        const void *block = nullptr;
        std::size_t size = 0;
        la_int64_t offset = 0;
        qint64 end = 0;
        while (true) {
            throwIfStopped(stop);
            const int result = archive_read_data_block(m_reader.get(), &block, &size, &offset);
            if (result == ARCHIVE_EOF)
                break;
            require(result, m_reader.get());
            end = offset + static_cast<qint64>(size); // holes count: a file must not be longer either
            if (end > m_limits.bytes - m_bytes)
                refuse();
            const auto written = archive_write_data_block(m_writer.get(), block, size, offset);
            require(static_cast<int>(std::min<la_ssize_t>(written, ARCHIVE_OK)), m_writer.get());
        }
        m_bytes += end;
    }

    QString m_folder;
    ArchiveUnpacking::Limits m_limits;
    Reader m_reader;
    Writer m_writer;
    QSet<QString> m_names;
    qint64 m_bytes = 0;
};

} // namespace

void ArchiveUnpacking::unpack(const QString &archive, const QString &folder, const Limits &limits,
                              const std::stop_token &stop)
{
    Unpacking(folder, limits).run(archive, stop);
}

} // namespace morvane
