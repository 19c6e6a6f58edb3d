#include "platform/linux/X11ScreenCapture.h"

#include "async/Work.h"
#include "platform/linux/OwnWindows.h"
#include "platform/linux/X11Picture.h"

#include <QGuiApplication>
#include <QScreen>

namespace morvane {

bool X11ScreenCapture::isHiddenByFullScreen() const
{
    return OwnWindows::fillMainDisplay();
}

QCoro::Task<std::shared_ptr<const ScreenPicture>> X11ScreenCapture::capture(std::stop_token stop)
{
    using Picture = std::shared_ptr<const ScreenPicture>;
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!screen)
        throw ScreenCaptureFailure(ScreenCaptureFailure::Reason::failed, "no display");
    const std::function<Picture(std::stop_token)> taking =
        [process = QCoreApplication::applicationPid(),
         pixelsPerPoint = screen->devicePixelRatio()](const std::stop_token &stopped) {
            return std::make_shared<const ScreenPicture>(
                X11Picture::take(nullptr, process, pixelsPerPoint, stopped));
        };
    Picture picture = co_await m_work.run(taking, stop);
    co_return picture;
}

} // namespace morvane
