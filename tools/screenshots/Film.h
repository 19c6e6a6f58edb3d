#pragma once

#include <QImage>
#include <QString>

class QQuickWindow;

namespace morvane {

// The frames of a film of a window. Of each only what changed is kept, as the picture
// "NUMBER-LEFT-TOP-MILLISECONDS.png"; a frame that shows nothing new makes the one before it last longer.
class Film {
public:
    Film(QQuickWindow &window, QString folder);
    ~Film();
    Film(const Film &) = delete;
    Film &operator=(const Film &) = delete;

    // What the window shows now, for so long.
    void take(int milliseconds);

private:
    void saveFrame();

    QQuickWindow &m_window;
    const QString m_folder;
    QImage m_shown; // with all that came before
    QRect m_changed;
    int m_lasts = 0;
    int m_count = 0;
};

} // namespace morvane
