#pragma once

#include "utils/files/SupportFolders.h"

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QRect>
#include <QVariantMap>

#include <memory>

namespace morvane {

class Alarm;
class ChatViewModel;
class Clock;
class ConversationRepository;

// Where the main window stood, which chat was open in it and how far that was scrolled, from one run to the
// next. It is one small file of the state folder, which holds no word of a chat, and names no chat that isn't
// in the store. A file that can't be read, or makes no sense, counts as none, and one that can't be written
// changes nothing. GUI thread.
class WindowMemory final : public QObject {
    Q_OBJECT
public:
    // Reads the file. `repository` and `clock` outlive this object.
    WindowMemory(const SupportFolders &folders, const ConversationRepository &repository, Clock &clock,
                 QObject *parent = nullptr);
    ~WindowMemory() override;

    [[nodiscard]] static QString path(const SupportFolders &folders);
    // A place whose top, and so its title, can be taken hold of on one of the screens, and that isn't larger
    // than this screen; null when no screen shows it. `screens` are what desktops leave free of panels.
    [[nodiscard]] static QRect fitting(const QRect &frame, const QList<QRect> &screens);

    // The chat begins with the one that was open, and each that is opened is remembered.
    void follow(ChatViewModel &chat);
    // A window that is yet to show gets its former place, as far as there still is one, and its size.
    void follow(QQuickWindow &window);
    // Around the time that the window is hidden: a window manager of X11 takes one that is shown again for a
    // new one, and what filled the screen for its own size.
    void noteFrame();
    void restore();
    // How far the chat was scrolled, as the window's content takes it; empty when another one is open now.
    [[nodiscard]] QVariantMap place() const;
    // The window goes: its last place, and its content's, are written.
    void leave(const QVariantMap &place);

private:
    struct State {
        QRect frame; // without what the desktop draws around it; null while unknown
        bool isMaximised = false;
        QString chat;      // its id; empty for none
        int row = -1;      // at the top of the view; -1: the end was in view
        double offset = 0; // of that row's part above the view, logical pixels

        bool operator==(const State &) const = default;
    };

    [[nodiscard]] static State read(const QString &path);
    void write();
    void noteSoon();
    void noteChat();

    const QString m_path;
    const ConversationRepository &m_repository;
    Clock &m_clock;
    State m_state;
    State m_written;
    QPointer<QQuickWindow> m_window;
    QPointer<ChatViewModel> m_chat;
    std::unique_ptr<Alarm> m_due;
};

} // namespace morvane
