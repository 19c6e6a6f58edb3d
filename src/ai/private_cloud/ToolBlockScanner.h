#pragma once

#include <QString>

namespace morvane {

// Keeps a tool block out of the text that is shown: of a growing reply it releases what can no longer be the
// beginning of a marker, and nothing behind one. Holds back 23 characters; behind the marker it keeps all, so
// whoever feeds it bounds the reply.
class ToolBlockScanner {
public:
    // The text that may be shown now; empty for none.
    [[nodiscard]] QString append(const QString &text);

    // At the end of the reply: the rest of the text when no marker came.
    [[nodiscard]] QString flush();

    [[nodiscard]] bool sawMarker() const { return m_sawMarker; }

    // What stands behind the opening marker, up to the closing one where there is one.
    [[nodiscard]] QString block() const;

private:
    QString m_buffer; // not yet released; behind the marker, the block
    bool m_sawMarker = false;
};

} // namespace morvane
