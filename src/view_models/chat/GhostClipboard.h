#pragma once

#include <QClipboard>
#include <QObject>

namespace morvane {

class GhostDesk;

// What is copied while a Ghost chat is open is marked as a secret, so that clipboard managers keep no history
// of it. It can be pasted like anything else. GUI thread.
class GhostClipboard : public QObject {
    Q_OBJECT
public:
    // Both outlive this object.
    GhostClipboard(const GhostDesk &ghosts, QClipboard &clipboard, QObject *parent = nullptr);

private:
    void mark(QClipboard::Mode mode);

    const GhostDesk &m_ghosts;
    QClipboard &m_clipboard;
};

} // namespace morvane
