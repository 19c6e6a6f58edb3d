// morvane-extract pdf LIMIT | image: reads a hostile file from standard input in a confined process, and
// writes what is in it to standard output, as frames. Started by the program itself; not meant for people.

#include "documents/ExtractionFrames.h"
#include "documents/extraction/Confinement.h"
#include "documents/extraction/FrameOutput.h"
#include "documents/extraction/PDFText.h"
#include "documents/extraction/Picture.h"

#include <QCoreApplication>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <unistd.h>

using namespace morvane;
using namespace morvane::ExtractionFrames;
using namespace morvane::FrameOutput;

namespace {

QByteArray input()
{
    constexpr qsizetype atOnce = 1 << 20;
    QByteArray bytes;
    while (bytes.size() <= longestInput) {
        const qsizetype start = bytes.size();
        bytes.resize(start + atOnce);
        const ssize_t count = ::read(STDIN_FILENO, bytes.data() + start, atOnce);
        bytes.resize(start + std::max<ssize_t>(count, 0));
        if (count == 0)
            return bytes;
        if (count < 0 && errno != EINTR)
            end(1);
    }
    end(1);
}

// Pages are joined by a blank line.
std::optional<Failure> sendText(qsizetype limit)
{
    bool isFirst = true;
    const auto page = [&isFirst](const QString &text) {
        const QByteArray piece = (isFirst ? QByteArray() : QByteArray("\n\n")) + text.toUtf8();
        for (qsizetype at = 0; at < piece.size(); at += longestFrame)
            send(encoded(Kind::Text,
                         QByteArrayView(piece).sliced(at, std::min(longestFrame, piece.size() - at))));
        isFirst = false;
    };
    const auto progress = [](int done, int total) {
        send(encodedProgress(static_cast<quint32>(done), static_cast<quint32>(total)));
    };
    return PDFText::read(input(), limit, page, progress);
}

std::optional<Failure> sendImage()
{
    const PreparedPicture picture = Picture::prepared(input());
    if (picture.jpeg.isEmpty() || picture.jpeg.size() > longestFrame)
        return Failure::UnreadableImage;
    send(encoded(Kind::Image, picture.jpeg));
    send(encoded(Kind::Thumbnail, picture.thumbnail));
    return std::nullopt;
}

} // namespace

int main(int argc, char **argv)
{
    Confinement::limit();
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString task = arguments.value(1);
    // Libraries that decode are loaded while that is still allowed.
    static_cast<void>(QImageReader::supportedImageFormats());
    static_cast<void>(QImageWriter::supportedImageFormats());
    if (!Confinement::seal())
        end(1);
    std::optional<Failure> failure;
    if (task == QLatin1StringView("pdf"))
        failure = sendText(std::clamp(arguments.value(2).toInt(), 0, 1 << 30));
    else if (task == QLatin1StringView("image"))
        failure = sendImage();
    else
        end(2);
    if (failure)
        send(encoded(Kind::Failure, QByteArray(1, static_cast<char>(*failure))));
    send(encoded(Kind::Done, {}));
    end(0);
}
