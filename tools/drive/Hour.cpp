#include "Hour.h"

#include "models/ChatMessage.h"
#include "persistence/SettingsStore.h"
#include "support/WindowDriver.h"
#include "view_models/chat/ChatViewModel.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Desktops call a window that takes longer unresponsive.
constexpr auto patience = 3s;

// Shown side by side, in any width.
constexpr const char *headerItems[] = {"showSidebar", "headerNewChat", "chatTitle"};

QString answerNamed(const QString &name)
{
    QFile file(u":/scenes/answers/"_s + name + u".md"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("an answer is missing");
    return QString::fromUtf8(file.readAll());
}

QQuickWindow *otherWindow(const QQuickWindow *first)
{
    const auto windows = QGuiApplication::topLevelWindows();
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [first](QWindow *each) { return each != first && each->isVisible(); });
    return found == windows.end() ? nullptr : qobject_cast<QQuickWindow *>(*found);
}

bool hasPopup(QQuickWindow *window)
{
    const auto items = WindowDriver::allItems(window);
    return std::any_of(items.begin(), items.end(), [](const QQuickItem *item) {
        return item->isVisible() && item->inherits("QQuickPopupItem");
    });
}

QRectF placeOf(const QQuickItem *item)
{
    return item->mapRectToScene(item->boundingRect());
}

double distance(QColor a, QColor b)
{
    return std::hypot(a.red() - b.red(), a.green() - b.green(), a.blue() - b.blue());
}

// How many lines of a drawing begin with a pixel that is partly ground and partly drawing.
int softBeginnings(const QImage &drawing)
{
    const QColor ground = drawing.pixelColor(0, 0);
    const QColor inside = drawing.pixelColor(drawing.rect().center());
    int soft = 0;
    for (int y = 0; y < drawing.height(); ++y) {
        int x = 0;
        while (x < drawing.width() && distance(drawing.pixelColor(x, y), ground) < 8)
            ++x;
        if (x < drawing.width() &&
            distance(drawing.pixelColor(x, y), ground) < distance(inside, ground) * 0.7)
            ++soft;
    }
    return soft;
}

} // namespace

Hour::Hour(Studio &studio, Watch &watch)
    : m_studio(studio)
    , m_watch(watch)
    , m_hands(studio.window())
{}

void Hour::use(int rounds)
{
    m_studio.state().storage().settings->setReduceAnimation(false);
    m_studio.beginChat(u"practice-fast"_s);
    for (int round = 1; round <= rounds; ++round) {
        part("writing", [this] { write(); });
        part("resizing", [this] { resize(); });
        part("reading", [this] { readOn(); });
        part("tabbing", [this] { tabAround(); });
        part("settings", [this] { configure(); });
        part("stopping", [this] { stop(); });
        part("organising", [this] { organise(); });
    }
}

void Hour::part(const char *name, const std::function<void()> &work)
{
    QElapsedTimer time;
    time.start();
    work();
    look(name);
    std::printf("%-12s %5lld ms\n", name, static_cast<long long>(time.elapsed()));
}

void Hour::write()
{
    m_hands.press(u"ctrl+j"_s);
    for (int i = 0; i < 3; ++i) {
        m_hands.type(u"What happens to the words I type here?"_s);
        m_hands.press(u"Return"_s);
        m_studio.awaitReply();
        look("a reply");
    }
    m_hands.press(u"ctrl+shift+c"_s);
    expect(QGuiApplication::clipboard()->text() == m_studio.state().presentation().chat->lastAnswer(),
           u"copying the last answer"_s);
}

void Hour::stop()
{
    ChatViewModel &chat = *m_studio.state().presentation().chat;
    m_studio.state().storage().settings->setModel(u"practice"_s);
    m_hands.press(u"ctrl+j"_s);
    m_hands.type(u"A long story, please"_s);
    m_hands.press(u"Return"_s);
    m_studio.awaitText(u"."_s);
    m_hands.press(u"Escape"_s);
    m_studio.awaitReply();
    expect(chat.messages()->messages().back()->status() == MessageStatus::cancelled, u"stopping a reply"_s);
    m_studio.state().storage().settings->setModel(u"practice-fast"_s);
}

void Hour::readOn()
{
    for (const QString &name : {u"technical"_s, u"cards"_s, u"charts"_s, u"boards"_s}) {
        m_studio.openChat(u"Tell me about the %1"_s.arg(name), answerNamed(name));
        m_hands.wheel(item("messages"), -8);
        m_hands.wheel(item("messages"), 8);
        m_hands.press(u"Prior Prior Next Next alt+End"_s);
        look("an answer");
    }
    m_hands.click(item("copyReply"));
}

void Hour::tabAround()
{
    for (const QString &chords : {u"Tab"_s, u"shift+Tab"_s}) {
        for (int i = 0; i < 5; ++i) {
            m_hands.press(QStringList(8, chords).join(u' '));
            expect(m_studio.window()->activeFocusItem() != nullptr, u"something has the focus"_s);
        }
    }
    m_hands.press(u"ctrl+j"_s);
    expect(m_studio.window()->activeFocusItem() == item("composer"), u"a key leads back to the composer"_s);
}

void Hour::resize()
{
    const QSize sizes[] = {{1100, 760}, {700, 760}, {420, 760}, {1100, 760}, {420, 520},
                           {960, 1000}, {600, 700}, {799, 600}, {800, 600},  {1100, 760}};
    for (const QSize &size : sizes) {
        m_hands.resize(size);
        look(qPrintable(u"%1 x %2"_s.arg(size.width()).arg(size.height())));
    }
}

void Hour::configure()
{
    m_hands.press(u"ctrl+comma"_s);
    QQuickWindow *settings = otherWindow(m_studio.window());
    expect(settings != nullptr, u"the settings open"_s);
    m_hands.turnTo(settings);
    for (const QString &page : settings->property("pages").toStringList()) {
        settings->setProperty("page", page);
        m_hands.press(QStringList(6, u"Tab"_s).join(u' '));
        m_hands.press(QStringList(3, u"shift+Tab"_s).join(u' '));
        look(qPrintable(page));
    }
    m_hands.press(u"ctrl+w"_s);
    expect(!settings->isVisible(), u"the settings close"_s);
    m_hands.turnTo(m_studio.window());
}

void Hour::organise()
{
    m_hands.press(u"ctrl+question"_s);
    expect(hasPopup(m_studio.window()), u"the list of keys shows"_s);
    m_hands.press(u"Escape"_s);
    expect(WindowDriver::eventually([this] { return !hasPopup(m_studio.window()); }), u"it goes again"_s);
    m_hands.press(u"F9 F9 ctrl+k"_s);
    m_hands.type(u"words"_s);
    m_hands.press(u"Down Escape"_s);
    m_hands.press(u"ctrl+Prior ctrl+Next ctrl+n"_s);
    expect(item("suggestion") != nullptr, u"a new chat is empty"_s);
    lookAtEdges();
    m_hands.click(item("suggestion"));
    expect(!m_studio.state().presentation().chat->draft().isEmpty(), u"a suggestion fills the composer"_s);
    m_hands.press(u"ctrl+a Delete"_s);
}

// The ghost's head is round: where edges are jagged, no line of it begins softly.
void Hour::lookAtEdges()
{
    const QQuickItem *ghost = item("largeGhost");
    expect(ghost != nullptr, u"the ghost shows"_s);
    const QImage shown = m_studio.window()->grabWindow();
    const QRectF place = placeOf(ghost);
    const qreal scale = m_studio.window()->effectiveDevicePixelRatio();
    const QRect pixels = QRectF(place.topLeft() * scale, place.size() * scale).toRect();
    expect(softBeginnings(shown.copy(pixels)) >= 5, u"edges are smooth"_s);
}

void Hour::takePictures()
{
    m_studio.beginChat(u"practice-fast"_s);
    write();
    m_hands.press(u"ctrl+comma"_s);
    QQuickWindow *settings = otherWindow(m_studio.window());
    expect(settings != nullptr, u"the settings open"_s);
    settings->setProperty("page", u"network"_s);
    m_studio.take(u"ledger"_s, settings);
    settings->close();
    m_hands.turnTo(m_studio.window());
    m_studio.openChat(u"How did prices develop?"_s, answerNamed(u"charts"_s));
    for (const int width : {420, 1100, 2560}) {
        m_hands.resize({width, 760});
        m_studio.take(u"answer-%1"_s.arg(width));
        look("a picture");
    }
    m_hands.press(u"ctrl+n"_s);
    for (const int width : {2560, 1100, 420}) {
        m_hands.resize({width, 760});
        m_studio.take(u"empty-%1"_s.arg(width));
        look("a picture");
    }
}

void Hour::lookAtFirstStart()
{
    const QQuickWindow *window = m_studio.window();
    expect(window->screen()->geometry().contains(window->geometry()), u"the first size fits the screen"_s);
    look("the first start");
}

// Waits until what slides has come to rest: a width of the header's items that never comes is what is looked
// for.
void Hour::look(const char *name)
{
    const auto isApart = [this] {
        QList<QRectF> places;
        for (const char *each : headerItems) {
            const QQuickItem *shown = item(each);
            if (!shown)
                continue;
            const QRectF place = placeOf(shown);
            if (place.left() < 0 || place.right() > m_studio.window()->width() || place.width() <= 0)
                return false;
            for (const QRectF &other : places) {
                if (other.intersects(place))
                    return false;
            }
            places += place;
        }
        return !places.isEmpty();
    };
    const auto fail = [name](const QString &what) {
        throw std::runtime_error("after " + std::string(name) + ": " + what.toStdString());
    };
    if (!WindowDriver::eventually(isApart))
        fail(u"the header's items lie over each other or outside"_s);
    if (!m_watch.complaints().isEmpty())
        fail(m_watch.complaints().join(u'\n'));
    if (m_watch.longestWait() > patience)
        fail(u"the window was unresponsive for %1 ms"_s.arg(m_watch.longestWait().count()));
}

QQuickItem *Hour::item(const char *objectName) const
{
    return WindowDriver::item(m_studio.window(), QString::fromLatin1(objectName));
}

void Hour::expect(bool holds, const QString &what) const
{
    if (!holds)
        throw std::runtime_error("it did not come about: " + what.toStdString());
}

} // namespace morvane
