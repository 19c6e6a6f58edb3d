#include "platform/linux/TrayPictures.h"

#include "utils/text/Product.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <QtEndian>

namespace morvane {

using namespace Qt::StringLiterals;

namespace TrayPictures {

namespace {

QString drawingOf(TrayState state)
{
    const auto named = [](const QString &what) { return Product::desktopId + what + u"-symbolic"_s; };
    switch (state) {
    case TrayState::idle:
        return named({});
    case TrayState::replying:
        return named(u"-replying"_s);
    case TrayState::asking:
        return named(u"-asking"_s);
    case TrayState::locked:
        return named(u"-locked"_s);
    }
    return {};
}

QImage drawn(QSvgRenderer &drawing, int side, const QColor &color)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    constexpr int edge = 1; // pixel, on each side
    drawing.render(&painter, QRectF(edge, edge, side - 2 * edge, side - 2 * edge));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

TrayPicture pictureOf(const QImage &image)
{
    const QImage plain = image.convertToFormat(QImage::Format_ARGB32);
    TrayPicture picture{plain.width(), plain.height(), QByteArray(plain.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(plain.constBits(), plain.sizeInBytes() / 4, picture.pixels.data());
    return picture;
}

} // namespace

QString nameOf(TrayState state)
{
    const QString name = drawingOf(state);
    const QString file = u"icons/hicolor/symbolic/apps/"_s + name + u".svg"_s;
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty() ? QString() : name;
}

QList<TrayPicture> of(TrayState state)
{
    QSvgRenderer drawing(u":/ai/morvane/tray/"_s + drawingOf(state) + u".svg"_s);
    QList<TrayPicture> pictures;
    for (const int side : {16, 22, 24, 32, 48}) {
        const QImage dark = drawn(drawing, side, QColor(0x17, 0x17, 0x1b));
        QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        for (const QPoint &offset : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)})
            painter.drawImage(offset, dark);
        painter.drawImage(0, 0, drawn(drawing, side, QColor(0xec, 0xec, 0xf1)));
        painter.end();
        pictures += pictureOf(image);
    }
    return pictures;
}

} // namespace TrayPictures

} // namespace morvane
