#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace morvane {

// Cuts a body into lines at LF, CR LF and CR, wherever its pieces break. Lines are bytes; nothing is decoded,
// and a line that lies within one piece is not copied.
class LineSplitter {
public:
    // A longer line is no line of any protocol that we read.
    explicit LineSplitter(qsizetype longestLine)
        : m_longestLine(longestLine)
    {}

    // The next piece of the body, once next() has nothing left of the former one.
    void add(QByteArray piece);

    // The next whole line without its end, valid until the following call; nothing when more bytes are
    // needed. Throws ProviderError::replyTooLarge when a line passes the limit.
    [[nodiscard]] std::optional<QByteArrayView> next();

    // What stands behind the last line end once the body is over; nothing when that is no byte.
    [[nodiscard]] std::optional<QByteArrayView> last() const;

private:
    [[nodiscard]] qsizetype lineEnd(); // offset in the piece, or negative

    qsizetype m_longestLine;
    QByteArray m_piece;
    qsizetype m_at = 0;            // start of what is unread in the piece
    qsizetype m_nextLineFeed = -1; // offset of the first LF at or behind m_at, when known
    bool m_skipsLineFeed = false;  // the former line ended in CR
    QByteArray m_carried;          // start of a line from earlier pieces
    bool m_carriedIsHandedOut = false;
};

} // namespace morvane
