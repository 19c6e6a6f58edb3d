#include "services/recognition/LineReader.h"

#include <leptonica/allheaders.h>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <vector>

namespace morvane {

namespace {

// Letters of 13 pixels are half read; the same ones at twice the size are all read.
constexpr double readableScale = 2;
constexpr int widestPicture = 8192; // pixels
constexpr int pointsPerInch = 96;
// Percent. Icons and edges look like letters now and then, but never quite.
constexpr float leastConfidence = 30;

struct PixDestroyer {
    void operator()(Pix *pix) const { ::pixDestroy(&pix); }
};
using PixPointer = std::unique_ptr<Pix, PixDestroyer>;

PixPointer pictureOf(const std::vector<std::uint8_t> &ink, int width, int height)
{
    PixPointer picture(::pixCreate(width, height, 8));
    if (!picture)
        return nullptr;
    l_uint32 *words = ::pixGetData(picture.get());
    const int wordsPerLine = ::pixGetWpl(picture.get());
    for (int y = 0; y < height; ++y) {
        l_uint32 *line = words + static_cast<std::ptrdiff_t>(y) * wordsPerLine;
        for (int x = 0; x < width; ++x)
            SET_DATA_BYTE(line, x, ink[static_cast<std::size_t>(y) * width + x]);
    }
    return picture;
}

QRectF boxOf(const tesseract::ResultIterator &line, double width, double height)
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    if (!line.BoundingBox(tesseract::RIL_TEXTLINE, &left, &top, &right, &bottom))
        return {};
    return {left / width, 1 - bottom / height, (right - left) / width, (bottom - top) / height};
}

} // namespace

LineReader::LineReader(const std::string &languages)
{
    auto engine = std::make_unique<tesseract::TessBaseAPI>();
    if (engine->Init(nullptr, languages.c_str(), tesseract::OEM_LSTM_ONLY) != 0)
        return;
    engine->SetVariable("debug_file", "/dev/null");
    engine->SetVariable("tessedit_do_invert", "0"); // ink is black here
    engine->SetPageSegMode(tesseract::PSM_SPARSE_TEXT);
    m_engine = std::move(engine);
}

LineReader::~LineReader() = default;

bool LineReader::read(const ScreenPixels &screen, double pixelsPerPoint, const Found &found)
{
    const double wanted = std::clamp(readableScale / pixelsPerPoint, 1.0, readableScale);
    const double scale = std::min(wanted, std::max(1.0, double(widestPicture) / screen.width));
    const PixPointer plain = pictureOf(InkPicture::of(screen), screen.width, screen.height);
    const auto factor = static_cast<l_float32>(scale);
    const PixPointer picture(plain ? ::pixScaleGrayLI(plain.get(), factor, factor) : nullptr);
    if (!picture)
        return false;
    m_engine->SetImage(picture.get());
    m_engine->SetSourceResolution(static_cast<int>(pointsPerInch * scale));
    if (m_engine->Recognize(nullptr) != 0)
        return false;
    const std::unique_ptr<tesseract::ResultIterator> line(m_engine->GetIterator());
    if (!line)
        return true; // nothing on it
    const double width = ::pixGetWidth(picture.get());
    const double height = ::pixGetHeight(picture.get());
    do {
        const std::unique_ptr<char[]> text(line->GetUTF8Text(tesseract::RIL_TEXTLINE));
        const QString words = QString::fromUtf8(text.get()).trimmed();
        if (!words.isEmpty() && line->Confidence(tesseract::RIL_TEXTLINE) >= leastConfidence)
            found({words, boxOf(*line, width, height)});
    } while (line->Next(tesseract::RIL_TEXTLINE));
    return true;
}

} // namespace morvane
