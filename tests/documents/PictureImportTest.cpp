#include "DocumentImportFixture.h"

#include <QColorSpace>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;

namespace {

using PictureImportTest = DocumentImportFixture;

TEST_F(PictureImportTest, PreparesAPictureAndLeavesNothingButItsPixels)
{
    for (const char *const format : {"png", "bmp", "webp", "tiff"})
        EXPECT_EQ(prepared(encoded(filled(300, 200, Qt::red), format)).size(), QSize(300, 200)) << format;
    EXPECT_EQ(prepared(encoded(filled(4000, 3000, Qt::red), "jpeg")).size(), QSize(1536, 1152));
    EXPECT_EQ(prepared(encoded(filled(1, 4000, Qt::red), "png")).size(), QSize(1, 1536));
    EXPECT_EQ(QColor(prepared(encoded(filled(8, 8, Qt::transparent), "png")).pixel(4, 4)), QColor(Qt::white));
    QImage striped = filled(300, 100, Qt::red); // whose middle is blue
    QPainter(&striped).fillRect(100, 0, 100, 100, Qt::blue);
    prepared(encoded(striped, "png"));
    ASSERT_EQ(thumbnail.size(), 96 * 96 * 3);
    for (const qsizetype at : {qsizetype(96 * 48 + 8) * 3, qsizetype(96 * 48 + 88) * 3}) {
        EXPECT_LT(quint8(thumbnail[at]), 60);
        EXPECT_GT(quint8(thumbnail[at + 2]), 200);
    }
    const struct {
        QColorSpace::NamedColorSpace space;
        const char *format;
        int red; // in sRGB
    } spaces[] = {{QColorSpace::AdobeRgb, "png", 230},
                  {QColorSpace::AdobeRgb, "jpeg", 230},
                  {QColorSpace::DisplayP3, "png", 216},
                  {QColorSpace::DisplayP3, "jpeg", 216}};
    for (const auto &[space, format, red] : spaces) {
        QImage wide = filled(64, 64, QColor(200, 60, 60));
        wide.setText(u"Author"_s, u"marked words"_s);
        wide.setColorSpace(space);
        EXPECT_NEAR(QColor(prepared(encoded(wide, format)).pixel(9, 9)).red(), red, 4) << format;
    }

    // One bit for each pixel: nothing but their number is too much.
    const auto bomb = [](int side, const char *format) {
        QImage image(side, side, QImage::Format_Mono);
        image.fill(0);
        return encoded(image, format);
    };
    for (const QByteArray &data :
         {bomb(30'000, "png"), bomb(10'001, "png"), bomb(16'000, "jpeg"), QByteArray("GIF89a"), QByteArray(),
          QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>")})
        EXPECT_EQ(refusalOf([&] { prepared(data); }), DocumentError(Plain::unreadableImage));
}

// By where the first row and the first column lie, in each of the eight ways a camera can be held.
TEST_F(PictureImportTest, HoldsAPictureUpright)
{
    QImage corners(3072, 1536, QImage::Format_RGB32);
    corners.fill(Qt::white);
    QPainter painter(&corners);
    painter.fillRect(0, 0, 1536, 768, Qt::red);
    painter.fillRect(1536, 0, 1536, 768, Qt::blue);
    painter.end();
    const QByteArray jpeg = encoded(corners, "jpeg");
    const QString seen[] = {u"red blue white white"_s, u"blue red white white"_s, u"white white blue red"_s,
                            u"white white red blue"_s, u"red white blue white"_s, u"white red white blue"_s,
                            u"white blue white red"_s, u"blue white red white"_s};
    for (int way = 1; way <= 8; ++way) {
        QByteArray exif = QByteArray::fromHex("ffe1002245786966000049492a000800000001001201030001000000");
        exif += static_cast<char>(way) + QByteArray::fromHex("00000000000000");
        const QImage image = prepared(QByteArray(jpeg).insert(2, exif));
        EXPECT_EQ(image.size(), way < 5 ? QSize(1536, 768) : QSize(768, 1536));
        QStringList colours;
        for (const int quarter : {0, 1, 2, 3}) {
            const QColor colour = image.pixelColor(image.width() * (1 + quarter % 2 * 2) / 4,
                                                   image.height() * (1 + quarter / 2 * 2) / 4);
            colours += colour.green() > 128 ? u"white"_s : colour.red() > 128 ? u"red"_s : u"blue"_s;
        }
        EXPECT_EQ(colours.join(u' '), seen[way - 1]) << way;
    }
}

TEST_F(PictureImportTest, PreparesTheLargestPhotographs)
{
    QImage image(16'000, 12'000, QImage::Format_Indexed8);
    image.setColorTable({qRgb(255, 0, 0)});
    image.fill(0);
    const QImage shown = prepared(encoded(image, "jpeg"));
    EXPECT_EQ(shown.size(), QSize(1536, 1152));
    EXPECT_GT(shown.pixelColor(1535, 1151).red(), 240);
}

} // namespace

} // namespace morvane
