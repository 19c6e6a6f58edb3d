#include "documents/extraction/Picture.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QSet>

#include <algorithm>

namespace morvane {

namespace {

// Four bytes for each pixel, twice while they are scaled: that is what the process may take.
constexpr qint64 mostPixels = 100'000'000;
// JPEG is scaled down while it is read and never there as a whole. Telephones take up to 200 million pixels.
constexpr qint64 mostCameraPixels = 250'000'000;
constexpr int mostMegabytes = 512;
constexpr int usualQuality = 80;
constexpr int coarseQuality = 60;

bool isPixelFormat(const QByteArray &format)
{
    static const QSet<QByteArray> formats{"png", "jpeg", "jpg", "gif", "bmp", "webp", "tiff", "tif"};
    return formats.contains(format);
}

// Of a picture that fits its own.
QSize fittedSize(QSize size)
{
    const QSize box(Picture::longestSide, Picture::longestSide);
    return size.boundedTo(box) == size ? size : size.scaled(box, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

QImage decoded(QByteArray &bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::ReadOnly);
    QImageReader::setAllocationLimit(mostMegabytes);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    const bool isFromCamera = reader.format() == "jpeg";
    if (!isPixelFormat(reader.format()) || size.isEmpty() ||
        qint64{size.width()} * size.height() > (isFromCamera ? mostCameraPixels : mostPixels))
        return {};
    if (isFromCamera && fittedSize(size) != size)
        reader.setScaledSize(fittedSize(size));
    return reader.read();
}

QImage fitted(const QImage &image)
{
    const QSize size = fittedSize(image.size());
    return size == image.size() ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// A new image has no notes, no profile and no resolution from the old one.
QImage bare(QImage image)
{
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb)) {
        if (image.format() == QImage::Format_Indexed8)
            image = image.convertToFormat(QImage::Format_ARGB32);
        image.convertToColorSpace(QColorSpace::SRgb);
    }
    QImage pixels(image.size(), QImage::Format_RGB32);
    pixels.fill(Qt::white);
    image.setColorSpace({});
    image.setDevicePixelRatio(1);
    QPainter(&pixels).drawImage(QPoint(0, 0), image);
    return pixels;
}

QByteArray encoded(const QImage &image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    return writer.write(image) ? bytes : QByteArray();
}

// The square in the middle.
QByteArray thumbnailOf(const QImage &image)
{
    constexpr int side = PreparedPicture::thumbnailSide;
    const int shorter = std::min(image.width(), image.height());
    const QRect middle((image.width() - shorter) / 2, (image.height() - shorter) / 2, shorter, shorter);
    const QImage square = image.copy(middle)
                              .scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                              .convertToFormat(QImage::Format_RGB888);
    QByteArray pixels;
    for (int row = 0; row < side; ++row)
        pixels.append(reinterpret_cast<const char *>(square.constScanLine(row)), 3 * side);
    return pixels;
}

} // namespace

PreparedPicture Picture::prepared(QByteArray bytes)
{
    const QImage image = decoded(bytes);
    if (image.isNull())
        return {};
    const QImage pixels = bare(fitted(image));
    QByteArray jpeg = encoded(pixels, usualQuality);
    if (jpeg.size() > wantedBytes)
        jpeg = encoded(pixels, coarseQuality);
    return {jpeg, thumbnailOf(pixels)};
}

} // namespace morvane
