#include "app/WindowMemory.h"

#include "async/Clock.h"
#include "persistence/ConversationRepository.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Json.h"
#include "utils/text/Product.h"
#include "view_models/chat/ChatViewModel.h"

#include <QGuiApplication>
#include <QJsonDocument>
#include <QScreen>
#include <QUuid>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qsizetype largestFile = 1 << 14; // bytes
// A window that is dragged is written once it rests.
constexpr auto rest = 2s;
// Logical pixels. No desktop reaches as far as the greatest coordinate.
constexpr std::int64_t furthest = 1 << 16;
constexpr QSize hold{120, 24}; // of a title, to be dragged by

std::optional<int> bounded(const QJsonObject &object, QLatin1StringView key)
{
    const auto value = Json::integer(object, key);
    if (!value || *value < -furthest || *value > furthest)
        return std::nullopt;
    return static_cast<int>(*value);
}

QRect frameIn(const QJsonObject &object)
{
    const auto x = bounded(object, "x"_L1);
    const auto y = bounded(object, "y"_L1);
    const auto width = bounded(object, "width"_L1);
    const auto height = bounded(object, "height"_L1);
    return x && y && width && height ? QRect(*x, *y, *width, *height) : QRect();
}

QList<QRect> screens()
{
    QList<QRect> rooms;
    for (const QScreen *screen : QGuiApplication::screens())
        rooms += screen->availableGeometry();
    return rooms;
}

} // namespace

WindowMemory::WindowMemory(const SupportFolders &folders, const ConversationRepository &repository,
                           Clock &clock, QObject *parent)
    : QObject(parent)
    , m_path(path(folders))
    , m_repository(repository)
    , m_clock(clock)
    , m_state(read(m_path))
    , m_written(m_state)
{}

WindowMemory::~WindowMemory() = default;

QString WindowMemory::path(const SupportFolders &folders)
{
    return folders.state + u'/' + Product::serviceName + u"/window.json"_s;
}

QRect WindowMemory::fitting(const QRect &frame, const QList<QRect> &screens)
{
    for (const QRect &screen : screens) {
        const QRect title = QRect(frame.topLeft(), QSize(frame.width(), hold.height())) & screen;
        if (frame.isValid() && title.width() >= hold.width() && title.height() >= hold.height())
            return {frame.topLeft(), frame.size().boundedTo(screen.size())};
    }
    return {};
}

void WindowMemory::follow(ChatViewModel &chat)
{
    m_chat = &chat;
    chat.remember(m_state.chat);
    connect(&chat, &ChatViewModel::conversationChanged, this, &WindowMemory::noteChat);
}

void WindowMemory::follow(QQuickWindow &window)
{
    m_window = &window;
    restore();
    connect(&window, &QWindow::xChanged, this, &WindowMemory::noteSoon);
    connect(&window, &QWindow::yChanged, this, &WindowMemory::noteSoon);
    connect(&window, &QWindow::widthChanged, this, &WindowMemory::noteSoon);
    connect(&window, &QWindow::heightChanged, this, &WindowMemory::noteSoon);
    connect(&window, &QWindow::windowStateChanged, this, &WindowMemory::noteSoon);
}

// Without a screen that shows it the desktop finds the window a place, as it does where programs have no say
// in that, and only the size comes back.
void WindowMemory::restore()
{
    if (m_state.frame.isValid()) {
        const QRect frame = fitting(m_state.frame, screens());
        if (frame.isValid())
            m_window->setPosition(frame.topLeft());
        const QSize most = frame.isValid() ? frame.size() : m_window->screen()->availableSize();
        m_window->resize(m_state.frame.size().boundedTo(most).expandedTo(m_window->minimumSize()));
    }
    if (m_state.isMaximised)
        m_window->setWindowStates(Qt::WindowMaximized);
}

QVariantMap WindowMemory::place() const
{
    if (m_state.row < 0 || !m_chat || m_chat->conversationId() != m_state.chat)
        return {};
    return {{u"list"_s,
             QVariantMap{{u"following"_s, false}, {u"row"_s, m_state.row}, {u"offset"_s, m_state.offset}}}};
}

void WindowMemory::leave(const QVariantMap &place)
{
    if (m_due)
        noteFrame();
    m_window.clear();
    const QVariantMap list = place.value(u"list"_s).toMap();
    // A Ghost chat that is open is not the one that is remembered.
    const bool isOf = m_chat && m_chat->conversationId() == m_state.chat;
    const bool isAtEnd = !isOf || list.value(u"following"_s, true).toBool();
    m_state.row = isAtEnd ? -1 : list.value(u"row"_s).toInt();
    m_state.offset = isAtEnd ? 0 : list.value(u"offset"_s).toDouble();
    write();
}

void WindowMemory::noteSoon()
{
    m_due = m_clock.after(rest, [this] {
        noteFrame();
        write();
    });
}

// The place of a window that fills the screen is the one that it goes back to.
void WindowMemory::noteFrame()
{
    m_due.reset();
    if (!m_window || !m_window->isVisible())
        return;
    const Qt::WindowStates states = m_window->windowStates();
    if (states & (Qt::WindowMinimized | Qt::WindowFullScreen))
        return;
    m_state.isMaximised = states.testFlag(Qt::WindowMaximized);
    if (!m_state.isMaximised)
        m_state.frame = m_window->geometry();
}

// One that isn't in the store, as a Ghost chat, leaves no trace.
void WindowMemory::noteChat()
{
    const QString id = m_chat->conversationId();
    if (id == m_state.chat || !m_repository.find(QUuid(id)))
        return;
    m_state.chat = id;
    m_state.row = -1;
    noteSoon();
}

WindowMemory::State WindowMemory::read(const QString &path)
{
    try {
        const auto bytes = PrivateFile::read(path, largestFile);
        const auto object = bytes ? Json::parseObject(*bytes) : std::nullopt;
        if (!object)
            return {};
        const auto frame = Json::object(*object, "frame"_L1);
        return {.frame = frame ? frameIn(*frame) : QRect(),
                .isMaximised = Json::boolean(*object, "maximised"_L1).value_or(false),
                .chat = Json::string(*object, "chat"_L1).value_or(QString()),
                .row = bounded(*object, "row"_L1).value_or(-1),
                .offset = std::clamp(Json::number(*object, "offset"_L1).value_or(0), -1e6, 1e6)};
    } catch (const FileError &) {
        return {};
    }
}

void WindowMemory::write()
{
    if (m_state == m_written)
        return;
    const QJsonObject frame{{u"x"_s, m_state.frame.x()},
                            {u"y"_s, m_state.frame.y()},
                            {u"width"_s, m_state.frame.width()},
                            {u"height"_s, m_state.frame.height()}};
    QJsonObject object{{u"maximised"_s, m_state.isMaximised},
                       {u"chat"_s, m_state.chat},
                       {u"row"_s, m_state.row},
                       {u"offset"_s, m_state.offset}};
    if (m_state.frame.isValid())
        object.insert(u"frame"_s, frame);
    try {
        PrivateFile::write(m_path, QJsonDocument(object).toJson(QJsonDocument::Compact));
        m_written = m_state;
    } catch (const FileError &) { // the window stands where it stands
    }
}

} // namespace morvane
