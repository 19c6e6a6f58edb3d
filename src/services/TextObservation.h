#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QRectF>
#include <QString>

#include <optional>
#include <vector>

namespace morvane {

// A line of text as it was seen in a picture.
struct TextObservation {
    QString text;
    // In fractions of the picture; y rises from its bottom, so top() is the box's lower edge.
    QRectF boundingBox;

    bool operator==(const TextObservation &) const = default;

    // For the pipe out of the process that reads: 16 bytes of numbers, then UTF-8.
    [[nodiscard]] QByteArray encoded() const;
    // Nothing when it can't be one.
    [[nodiscard]] static std::optional<TextObservation> decoded(QByteArrayView bytes);
};

namespace ScreenText {

// The lines in the order in which a person reads them: from the top of the screen, and from the left where
// the middles of two lie at about the same height. Joined by line feeds and trimmed.
[[nodiscard]] QString of(std::vector<TextObservation> observations);

} // namespace ScreenText

} // namespace morvane
