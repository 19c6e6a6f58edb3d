#include "services/TextObservation.h"

#include "utils/text/Text.h"

#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane {

namespace {

constexpr double whole = 1 << 24; // how finely a box is told
constexpr qsizetype numbers = 4;
constexpr qsizetype headerBytes = numbers * qsizetype{sizeof(quint32)};
// The boxes of words in one line differ a little in height; a fraction of the picture's.
constexpr double sameLine = 0.012;

double middle(const TextObservation &observation)
{
    return observation.boundingBox.center().y();
}

} // namespace

QByteArray TextObservation::encoded() const
{
    QByteArray bytes(headerBytes, Qt::Uninitialized);
    const std::array values{boundingBox.x(), boundingBox.y(), boundingBox.width(), boundingBox.height()};
    for (qsizetype i = 0; i < numbers; ++i)
        qToLittleEndian(static_cast<quint32>(std::lround(std::clamp(values[i], 0.0, 1.0) * whole)),
                        bytes.data() + i * qsizetype{sizeof(quint32)});
    return bytes + text.toUtf8();
}

std::optional<TextObservation> TextObservation::decoded(QByteArrayView bytes)
{
    if (bytes.size() < headerBytes)
        return std::nullopt;
    std::array<double, numbers> values{};
    for (qsizetype i = 0; i < numbers; ++i) {
        values[i] = qFromLittleEndian<quint32>(bytes.data() + i * qsizetype{sizeof(quint32)}) / whole;
        if (values[i] > 1)
            return std::nullopt;
    }
    const auto text = Text::fromUtf8(bytes.sliced(headerBytes).toByteArray());
    if (!text)
        return std::nullopt;
    return TextObservation{*text, {values[0], values[1], values[2], values[3]}};
}

// What counts as one height is told from one line to the next: a comparison of any two wouldn't be an order,
// where a is as high as b and b as c, but a isn't as high as c.
QString ScreenText::of(std::vector<TextObservation> observations)
{
    std::ranges::stable_sort(observations, std::greater{}, middle);
    const auto leftFirst = [](const TextObservation &one, const TextObservation &other) {
        return one.boundingBox.x() < other.boundingBox.x();
    };
    for (auto row = observations.begin(); row != observations.end();) {
        const double height = middle(*row);
        const auto end = std::find_if(row, observations.end(), [height](const TextObservation &one) {
            return height - middle(one) > sameLine;
        });
        std::stable_sort(row, end, leftFirst);
        row = end;
    }
    QStringList lines;
    for (const TextObservation &observation : observations)
        lines += observation.text;
    return Text::trimmed(lines.join(u'\n'));
}

} // namespace morvane
