#include "support/TestScreen.h"

#include "support/Await.h"

#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <array>
#include <sys/uio.h>

namespace morvane {

using namespace Qt::StringLiterals;

TestScreen::TestScreen(const QString &size)
{
    m_server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, size + u"x24"_s, u"-nolisten"_s,
                               u"tcp"_s, u"-noreset"_s});
    TestWait::until([this] { return m_server.canReadLine() || m_server.state() == QProcess::NotRunning; });
    if (const QByteArray number = m_server.readLine().trimmed(); !number.isEmpty())
        m_display = u':' + QString::fromLatin1(number);
}

TestScreen::~TestScreen()
{
    for (const auto &window : m_windows)
        end(*window);
    end(m_server);
}

void TestScreen::end(QProcess &process)
{
    process.kill();
    process.waitForFinished();
}

qint64 TestScreen::show(const Words &words)
{
    auto window = std::make_unique<QProcess>();
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_display);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"QT_SCALE_FACTOR"_s, QString::number(words.scale));
    window->setProcessEnvironment(environment);
    const QRect &place = words.place;
    window->start(QStringLiteral(MORVANE_KNOWN_WINDOW),
                  {QString::number(place.x()), QString::number(place.y()), QString::number(place.width()),
                   QString::number(place.height()), QString::number(words.pixels),
                   QString::fromLatin1(words.ink), QString::fromLatin1(words.paper), words.text});
    TestWait::until([&] { return window->canReadLine() || window->state() == QProcess::NotRunning; });
    m_windows.push_back(std::move(window));
    return m_windows.back()->processId();
}

void TestScreen::setDisplays(const std::vector<QRect> &displays) const
{
    int number = 0;
    xcb_connection_t *server = xcb_connect(m_display.toLatin1().constData(), &number);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    for (std::size_t i = 0; i < displays.size(); ++i) {
        const QByteArray name = "display" + QByteArray::number(qsizetype(i));
        auto *atom = xcb_intern_atom_reply(
            server, xcb_intern_atom(server, 0, std::uint16_t(name.size()), name.constData()), nullptr);
        // xcb's own function for this one trips over its padding.
        struct {
            xcb_randr_set_monitor_request_t head;
            xcb_randr_monitor_info_t info;
        } request{};
        request.head.window = root;
        request.info.name = atom->atom;
        request.info.primary = i + 1 == displays.size();
        request.info.x = std::int16_t(displays[i].x());
        request.info.y = std::int16_t(displays[i].y());
        request.info.width = std::uint16_t(displays[i].width());
        request.info.height = std::uint16_t(displays[i].height());
        std::free(atom);
        static const xcb_protocol_request_t about{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
        std::array<iovec, 3> parts{}; // two are xcb's
        parts[2] = {&request, sizeof request};
        xcb_void_cookie_t sent{};
        sent.sequence = xcb_send_request(server, XCB_REQUEST_CHECKED, &parts[2], &about);
        std::free(xcb_request_check(server, sent));
    }
    xcb_disconnect(server);
}

} // namespace morvane
