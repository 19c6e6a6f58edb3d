#pragma once

#include <QList>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>

#include <functional>

namespace morvane {

// Works a real window the way a person does: by key and pointer events, and by what is drawn.
namespace WindowDriver {

// Everything that is drawn in a window, parents before children.
[[nodiscard]] QList<QQuickItem *> allItems(QQuickWindow *window);

// The first item of that object name, hidden or not; null when there is none.
[[nodiscard]] QQuickItem *anyItem(QQuickWindow *window, const QString &objectName);

// The first one that is drawn.
[[nodiscard]] QQuickItem *item(QQuickWindow *window, const QString &objectName);

// The application's settings window, opened by its key if it isn't open yet.
[[nodiscard]] QQuickWindow *settingsWindow(QQuickWindow *mainWindow);

void press(QQuickWindow *window, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void type(QQuickWindow *window, const QString &text);
void click(QQuickItem *item);

// Turns the event loop until the condition holds; false after ten seconds.
[[nodiscard]] bool eventually(const std::function<bool()> &condition);

// Lets what was posted happen and a frame be laid out and drawn in every visible window.
void settle();

} // namespace WindowDriver

} // namespace morvane
