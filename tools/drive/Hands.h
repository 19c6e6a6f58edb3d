#pragma once

#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QStringList>

namespace morvane {

// A keyboard and a mouse: events of the X server itself, sent by xdotool. Each call returns once the program
// has taken them in and drawn a frame; it throws when xdotool fails. There need be no window manager.
class Hands {
public:
    explicit Hands(QQuickWindow *window) { turnTo(window); }

    // Gives a window the keyboard, as a window manager does.
    void turnTo(QQuickWindow *window);

    // Chords by their names in X, one after the other: "ctrl+comma Tab Tab".
    void press(const QString &chords);
    void type(const QString &text);

    void pointAt(QQuickItem *item);
    void click(QQuickItem *item);
    // Steps of the wheel over an item, down when positive.
    void wheel(QQuickItem *item, int steps);

    // In one step; logical pixels.
    void resize(const QSize &size);

private:
    void run(const QStringList &arguments);

    QQuickWindow *m_window = nullptr;
};

} // namespace morvane
