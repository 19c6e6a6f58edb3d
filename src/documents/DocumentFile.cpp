#include "documents/DocumentFile.h"

#include "documents/DocumentError.h"
#include "utils/log/Log.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;

namespace {

constexpr qint64 bytesAtOnce = 1 << 20;

class Descriptor {
public:
    explicit Descriptor(int number)
        : m_number(number)
    {}
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

[[noreturn]] void refuseSize(qint64 size, qint64 limit)
{
    Log::info(Log::Category::Documents, "Rejected oversized file (%ld bytes)"_L1, {size});
    throw DocumentError(DocumentError::FileTooLarge{size, limit});
}

// The size that the file says it has.
qint64 judgedSize(const Descriptor &place, qint64 limit)
{
    struct stat status = {};
    if (place.number() < 0 || ::fstat(place.number(), &status) != 0 || !S_ISREG(status.st_mode))
        throw DocumentError(Plain::unreadable);
    if (status.st_size > limit)
        refuseSize(status.st_size, limit);
    return status.st_size;
}

// Up to `most` bytes; fewer at the end of the file.
QByteArray readUpTo(const Descriptor &file, qint64 expected, qint64 most)
{
    QByteArray bytes;
    bytes.reserve(std::min(expected + 1, most));
    while (bytes.size() < most) {
        const qsizetype start = bytes.size();
        bytes.resize(std::min(most, start + std::max<qint64>(bytesAtOnce, bytes.capacity() - start)));
        const ssize_t count = ::read(file.number(), bytes.data() + start, bytes.size() - start);
        bytes.resize(start + std::max<ssize_t>(count, 0));
        if (count == 0)
            break;
        if (count < 0 && errno != EINTR)
            throw DocumentError(Plain::unreadable);
    }
    return bytes;
}

} // namespace

QString DocumentFile::extensionOf(const QString &path)
{
    const QString name = path.sliced(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot <= 0 ? QString() : name.sliced(dot + 1).toLower();
}

bool DocumentFile::isSupported(const QString &extension)
{
    static const QSet<QString> extensions{u"txt"_s, u"md"_s, u"rtf"_s, u"pdf"_s};
    return extensions.contains(extension);
}

bool DocumentFile::isImage(const QString &extension)
{
    static const QSet<QString> extensions{u"png"_s,  u"jpg"_s, u"jpeg"_s, u"gif"_s,  u"bmp"_s,
                                          u"webp"_s, u"tif"_s, u"tiff"_s, u"heic"_s, u"svg"_s};
    return extensions.contains(extension);
}

QByteArray DocumentFile::read(const QString &path, qint64 limitBytes)
{
    // A place is looked at without opening what lies there; then what was looked at is opened, and not
    // whatever has come to stand at that path.
    const Descriptor place(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC));
    const qint64 size = judgedSize(place, limitBytes);
    const QByteArray opened = "/proc/self/fd/" + QByteArray::number(place.number());
    const Descriptor file(::open(opened.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.number() < 0)
        throw DocumentError(Plain::unreadable);
    QByteArray bytes = readUpTo(file, size, limitBytes + 1);
    if (bytes.size() > limitBytes)
        refuseSize(bytes.size(), limitBytes);
    return bytes;
}

} // namespace morvane
