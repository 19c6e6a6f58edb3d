#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace morvane {

// What the process that reads hostile files answers: frames of a kind (1 byte), a length (4 bytes,
// little-endian) and as many bytes. It gets its file as all that comes to its standard input.
namespace ExtractionFrames {

enum class Kind : char {
    Progress = 'p',  // pages read and pages in all, 4 bytes each, little-endian
    Text = 't',      // UTF-8, the next piece
    Image = 'i',     // JPEG
    Thumbnail = 'm', // as in PreparedPicture
    Line = 'l',      // a line on the screen, as TextObservation codes it
    Failure = 'f',   // a byte of Failure
    Done = 'd',      // nothing comes behind it
};

enum class Failure : char { Unreadable = 'u', PasswordProtected = 'p', UnreadableImage = 'i' };

inline constexpr qsizetype longestFrame = 16 << 20; // bytes
inline constexpr qsizetype longestInput = 64 << 20;

struct Frame {
    Kind kind;
    QByteArray payload;
};

[[nodiscard]] QByteArray encoded(Kind kind, QByteArrayView payload);
[[nodiscard]] QByteArray encodedProgress(quint32 done, quint32 total);

struct Progress {
    quint32 done;
    quint32 total;
};
[[nodiscard]] std::optional<Progress> progressOf(QByteArrayView payload);

// Takes the first frame off `bytes`; nothing while it isn't there as a whole. `isBroken` when it can't be
// one.
[[nodiscard]] std::optional<Frame> take(QByteArray &bytes, bool &isBroken);

} // namespace ExtractionFrames

} // namespace morvane
