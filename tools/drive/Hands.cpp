#include "Hands.h"

#include "support/WindowDriver.h"

#include <QProcess>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

void Hands::turnTo(QQuickWindow *window)
{
    m_window = window;
    run({u"windowfocus"_s, QString::number(window->winId())});
    if (!WindowDriver::eventually([window] { return window->isActive(); }))
        throw std::runtime_error("a window never got the keyboard");
}

void Hands::press(const QString &chords)
{
    run(QStringList{u"key"_s, u"--delay"_s, u"2"_s} + chords.split(u' '));
}

void Hands::type(const QString &text)
{
    run({u"type"_s, u"--delay"_s, u"2"_s, text});
}

void Hands::pointAt(QQuickItem *item)
{
    if (!item || !item->isVisible())
        throw std::runtime_error("what the pointer looks for isn't there");
    const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
    const QPoint pixel = (middle * m_window->effectiveDevicePixelRatio()).toPoint();
    run({u"mousemove"_s, u"--window"_s, QString::number(m_window->winId()), QString::number(pixel.x()),
         QString::number(pixel.y())});
}

void Hands::click(QQuickItem *item)
{
    pointAt(item);
    run({u"click"_s, u"1"_s});
}

void Hands::wheel(QQuickItem *item, int steps)
{
    pointAt(item);
    run({u"click"_s, u"--delay"_s, u"5"_s, u"--repeat"_s, QString::number(std::abs(steps)),
         steps > 0 ? u"5"_s : u"4"_s});
}

void Hands::resize(const QSize &size)
{
    const QSize pixels = size * m_window->effectiveDevicePixelRatio();
    run({u"windowsize"_s, QString::number(m_window->winId()), QString::number(pixels.width()),
         QString::number(pixels.height())});
    if (!WindowDriver::eventually([this, size] { return m_window->size() == size; }))
        throw std::runtime_error("the window never took its size");
    WindowDriver::settle();
}

// The event loop goes on meanwhile, as it does under a person's hands.
void Hands::run(const QStringList &arguments)
{
    QProcess tool;
    tool.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    tool.start(u"xdotool"_s, arguments);
    const bool ended = WindowDriver::eventually([&] { return tool.state() == QProcess::NotRunning; });
    if (!ended || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0)
        throw std::runtime_error("xdotool failed: " + arguments.join(u' ').toStdString());
    WindowDriver::settle();
}

} // namespace morvane
