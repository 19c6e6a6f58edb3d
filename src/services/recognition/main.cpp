// morvane-read-screen LANGUAGES PIXELS-PER-POINT (pixels WIDTH HEIGHT | file X Y WIDTH HEIGHT): finds the
// text in the picture that its standard input is, in a confined process, and writes the lines to standard
// output, as frames. Started by the program itself; not meant for people.

#include "documents/ExtractionFrames.h"
#include "documents/extraction/Confinement.h"
#include "documents/extraction/FrameOutput.h"
#include "services/recognition/LineReader.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>

#include <algorithm>
#include <cmath>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace morvane;
using namespace morvane::ExtractionFrames;
using namespace morvane::FrameOutput;

namespace {

constexpr int mostMegabytes = 300;  // of a picture that is decoded
constexpr int longestEdge = 32'000; // pixels

using Bytes = std::span<const std::uint8_t>;

// The memory that this process was handed, which nothing looks at yet.
Bytes input()
{
    struct stat about {};
    if (::fstat(STDIN_FILENO, &about) != 0 || about.st_size <= 0)
        return {};
    const auto size = static_cast<std::size_t>(about.st_size);
    const void *place = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, STDIN_FILENO, 0);
    if (place == MAP_FAILED)
        return {};
    return {static_cast<const std::uint8_t *>(place), size};
}

// The part of a decoded picture that is to be read, four bytes a pixel and no padding; null for none.
QImage decoded(Bytes file, const QStringList &edges)
{
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(file.data()), qsizetype(file.size()));
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader::setAllocationLimit(mostMegabytes);
    QImageReader reader(&buffer);
    const QImage whole = reader.read();
    const auto pixels = [&edges](int index, int all) {
        return static_cast<int>(std::lround(std::clamp(edges.value(index).toDouble(), 0.0, 1.0) * all));
    };
    const QRect part(pixels(0, whole.width()), pixels(1, whole.height()), pixels(2, whole.width()),
                     pixels(3, whole.height()));
    const QRect inside = part.intersected(whole.rect());
    return inside.isEmpty() ? QImage() : whole.copy(inside).convertToFormat(QImage::Format_RGB32);
}

bool read(LineReader &reader, Bytes bytes, const QStringList &arguments)
{
    const double pixelsPerPoint = arguments.value(2).toDouble();
    const auto found = [](const TextObservation &line) { send(encoded(Kind::Line, line.encoded())); };
    if (arguments.value(3) == QLatin1StringView("file")) {
        const QImage picture = decoded(bytes, arguments.sliced(4));
        if (picture.isNull())
            return false;
        const auto size = static_cast<std::size_t>(picture.sizeInBytes());
        return reader.read({picture.width(), picture.height(), {picture.constBits(), size}}, pixelsPerPoint,
                           found);
    }
    const int width = arguments.value(4).toInt();
    const int height = arguments.value(5).toInt();
    const bool fits = width > 0 && height > 0 && width <= longestEdge && height <= longestEdge &&
                      bytes.size() == std::size_t{4} * std::size_t(width) * std::size_t(height);
    return fits && reader.read({width, height, bytes}, pixelsPerPoint, found);
}

} // namespace

int main(int argc, char **argv)
{
    Confinement::limit();
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 5)
        end(2);
    // What opens files does so while that is still allowed.
    LineReader reader(arguments.at(1).toStdString());
    const Bytes bytes = input();
    static_cast<void>(QImageReader::supportedImageFormats());
    if (!Confinement::seal())
        end(1);
    if (!reader.isReady() || !read(reader, bytes, arguments))
        send(encoded(Kind::Failure, QByteArray(1, static_cast<char>(Failure::UnreadableImage))));
    send(encoded(Kind::Done, {}));
    end(0);
}
