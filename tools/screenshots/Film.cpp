#include "Film.h"

#include <QDir>
#include <QQuickWindow>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QRect difference(const QImage &before, const QImage &after)
{
    if (before.size() != after.size())
        return after.rect();
    QRect changed;
    for (int y = 0; y < after.height(); ++y) {
        const auto *old = reinterpret_cast<const QRgb *>(before.constScanLine(y));
        const auto *present = reinterpret_cast<const QRgb *>(after.constScanLine(y));
        const auto *const end = present + after.width();
        const auto *const first = std::mismatch(present, end, old).first;
        if (first == end)
            continue;
        const auto *last = end - 1;
        while (*last == old[last - present])
            --last;
        changed |=
            QRect(QPoint(static_cast<int>(first - present), y), QPoint(static_cast<int>(last - present), y));
    }
    return changed;
}

} // namespace

Film::Film(QQuickWindow &window, QString folder)
    : m_window(window)
    , m_folder(std::move(folder))
{
    QDir().mkpath(m_folder);
}

Film::~Film()
{
    saveFrame();
}

void Film::take(int milliseconds)
{
    const QImage frame = m_window.grabWindow().convertToFormat(QImage::Format_RGB32);
    const QRect changed = difference(m_shown, frame);
    if (!changed.isEmpty()) {
        saveFrame();
        m_shown = frame;
        m_changed = changed;
        m_lasts = 0;
    }
    m_lasts += milliseconds;
}

void Film::saveFrame()
{
    if (m_changed.isEmpty())
        return;
    const QString name = u"%1-%2-%3-%4.png"_s.arg(m_count++, 4, 10, QLatin1Char('0'))
                             .arg(m_changed.left())
                             .arg(m_changed.top())
                             .arg(m_lasts);
    m_shown.copy(m_changed)
        .convertToFormat(QImage::Format_RGB888)
        .save(QDir(m_folder).filePath(name), "PNG", 0);
}

} // namespace morvane
