#include "platform/linux/X11Picture.h"

#include "async/CancelledError.h"
#include "platform/linux/X11Windows.h"
#include "services/ScreenCapturing.h"

#include <QRect>

#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace morvane {

namespace {

using namespace std::chrono_literals;
using namespace X11Windows;
using Reason = ScreenCaptureFailure::Reason;

constexpr auto timeToDraw = 120ms; // for what was covered until now
constexpr auto betweenLooks = 20ms;
constexpr int longestEdge = 32'000; // pixels
constexpr std::uint8_t behindAll = 128;
constexpr std::uint8_t depthWithAlpha = 32;

// What the rows of a picture are painted on.
class Canvas {
public:
    explicit Canvas(QRect display)
        : m_display(display)
        , m_bytes(std::size_t{4} * std::size_t(display.width()) * std::size_t(display.height()))
    {
        std::fill_n(m_bytes.data(), m_bytes.size(), behindAll);
    }

    // `part` of a window whose pixels begin at `origin`; both count from the server's own origin.
    void paint(const std::uint8_t *pixels, QPoint origin, int width, QRect part, bool hasAlpha)
    {
        const QRect visible = part.intersected(m_display);
        for (int y = visible.top(); y <= visible.bottom(); ++y) {
            const std::uint8_t *from =
                pixels + 4 * (std::size_t(y - origin.y()) * width + std::size_t(visible.left() - origin.x()));
            std::uint8_t *to = m_bytes.data() + 4 * (std::size_t(y - m_display.top()) * m_display.width() +
                                                     std::size_t(visible.left() - m_display.left()));
            const std::size_t count = std::size_t{4} * std::size_t(visible.width());
            if (hasAlpha)
                blend(from, to, count);
            else
                std::copy_n(from, count, to);
        }
    }

    [[nodiscard]] SecretBytes takeBytes() { return std::move(m_bytes); }

private:
    // Colours come multiplied by their alpha already.
    static void blend(const std::uint8_t *from, std::uint8_t *to, std::size_t count)
    {
        for (std::size_t i = 0; i < count; i += 4) {
            const int behind = 255 - from[i + 3];
            for (std::size_t colour = 0; colour < 3; ++colour)
                to[i + colour] = static_cast<std::uint8_t>(
                    std::min(from[i + colour] + to[i + colour] * behind / 255, 255));
        }
    }

    QRect m_display;
    SecretBytes m_bytes;
};

// The display that the person made the main one, else the first.
QRect mainDisplay(xcb_connection_t *server, const xcb_screen_t &screen)
{
    const auto monitors =
        replyTo(&xcb_randr_get_monitors_reply, server, xcb_randr_get_monitors(server, screen.root, 1));
    const QRect all(0, 0, screen.width_in_pixels, screen.height_in_pixels);
    if (!monitors)
        return all;
    QRect chosen;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(monitors.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        const QRect place(each.data->x, each.data->y, each.data->width, each.data->height);
        if (chosen.isNull() || each.data->primary)
            chosen = place;
        if (each.data->primary)
            break;
    }
    const QRect inside = chosen.intersected(all);
    return inside.isEmpty() ? all : inside;
}

// A whole window goes in as its frame or shape has it.
std::vector<QRect> shapeOf(xcb_connection_t *server, xcb_window_t window, QPoint origin)
{
    std::vector<QRect> parts;
    const auto shape = replyTo(&xcb_shape_get_rectangles_reply, server,
                               xcb_shape_get_rectangles(server, window, XCB_SHAPE_SK_BOUNDING));
    if (!shape)
        return parts;
    const xcb_rectangle_t *rectangles = xcb_shape_get_rectangles_rectangles(shape.get());
    for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(shape.get()); ++i)
        parts.emplace_back(origin.x() + rectangles[i].x, origin.y() + rectangles[i].y, rectangles[i].width,
                           rectangles[i].height);
    return parts;
}

// Windows come and go: one that is gone meanwhile, or that can't be read, is left out.
bool paint(Canvas &canvas, xcb_connection_t *server, const Window &window, bool &isDenied)
{
    const xcb_pixmap_t pixmap = xcb_generate_id(server);
    xcb_composite_name_window_pixmap(server, window.id, pixmap);
    xcb_generic_error_t *error = nullptr;
    const xcb_get_image_cookie_t asked =
        xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, std::uint16_t(window.whole.width()),
                      std::uint16_t(window.whole.height()), ~0U);
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(server, asked, &error));
    const Reply<xcb_generic_error_t> problem(error);
    xcb_free_pixmap(server, pixmap);
    isDenied = isDenied || (problem && problem->error_code == XCB_ACCESS);
    const std::size_t bytes = std::size_t{4} * window.whole.width() * window.whole.height();
    if (!image || std::size_t(xcb_get_image_data_length(image.get())) < bytes)
        return false;
    const QPoint origin = window.whole.topLeft();
    for (const QRect &part : shapeOf(server, window.id, window.inner))
        canvas.paint(xcb_get_image_data(image.get()), origin, window.whole.width(),
                     part.intersected(window.whole), image->depth == depthWithAlpha);
    return true;
}

void wait(const std::stop_token &stop)
{
    for (auto waited = 0ms; waited < timeToDraw; waited += betweenLooks) {
        throwIfStopped(stop);
        std::this_thread::sleep_for(betweenLooks);
    }
}

void redirect(xcb_connection_t *server, xcb_window_t root)
{
    const auto version =
        replyTo(&xcb_composite_query_version_reply, server, xcb_composite_query_version(server, 0, 4));
    if (!version)
        throw ScreenCaptureFailure(Reason::failed, "the X server doesn't composite");
    const Reply<xcb_generic_error_t> error(xcb_request_check(
        server, xcb_composite_redirect_subwindows_checked(server, root, XCB_COMPOSITE_REDIRECT_AUTOMATIC)));
    if (error)
        throw ScreenCaptureFailure(error->error_code == XCB_ACCESS ? Reason::blind : Reason::failed,
                                   "the X server refused to composite");
}

} // namespace

ScreenPicture X11Picture::take(const char *display, qint64 withoutProcess, double pixelsPerPoint,
                               const std::stop_token &stop)
{
    int number = 0;
    const Connection connection(xcb_connect(display, &number));
    xcb_connection_t *server = connection.get();
    if (xcb_connection_has_error(server) != 0)
        throw ScreenCaptureFailure(Reason::failed, "no X server");
    const xcb_screen_t *screen = screenOf(server, number);
    const bool isUsual = screen && screen->root_depth >= 24 &&
                         xcb_get_setup(server)->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    if (!isUsual)
        throw ScreenCaptureFailure(Reason::failed, "the X server has no screen of true colours");
    redirect(server, screen->root);
    wait(stop);
    const QRect place = mainDisplay(server, *screen);
    if (place.width() > longestEdge || place.height() > longestEdge)
        throw ScreenCaptureFailure(Reason::failed, "the display is too large");
    Canvas canvas(place);
    bool isDenied = false;
    bool hasAny = false;
    for (const Window &window : shownWindows(server, screen->root)) {
        throwIfStopped(stop);
        if (window.whole.intersects(place) && processOf(server, window.id) != withoutProcess)
            hasAny = paint(canvas, server, window, isDenied) || hasAny;
    }
    if (isDenied && !hasAny)
        throw ScreenCaptureFailure(Reason::blind, "the X server lets this program see no window");
    if (xcb_connection_has_error(server) != 0)
        throw ScreenCaptureFailure(Reason::failed, "the X server is gone");
    return {.form = ScreenPicture::Form::pixels,
            .bytes = canvas.takeBytes(),
            .size = place.size(),
            .part = {0, 0, 1, 1},
            .pixelsPerPoint = pixelsPerPoint};
}

} // namespace morvane
