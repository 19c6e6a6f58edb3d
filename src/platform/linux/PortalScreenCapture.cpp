#include "platform/linux/PortalScreenCapture.h"

#include "async/Work.h"
#include "documents/DocumentFile.h"
#include "platform/linux/DesktopKind.h"
#include "platform/linux/OwnWindows.h"
#include "platform/linux/PortalScreenshot.h"
#include "utils/text/Product.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QGuiApplication>
#include <QMap>
#include <QScreen>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;
using Reason = ScreenCaptureFailure::Reason;
using Picture = std::shared_ptr<const ScreenPicture>;

namespace {

// The file goes whatever becomes of the picture.
SecretBytes takenFrom(const QString &path)
{
    QByteArray bytes;
    try {
        bytes = DocumentFile::read(path, PortalScreenCapture::largestFile);
    } catch (...) {
        QFile::remove(path);
        throw ScreenCaptureFailure(Reason::failed, "the portal's file can't be read");
    }
    QFile::remove(path);
    SecretBytes kept(bytes);
    wipe(bytes);
    return kept;
}

QRectF partOf(const QScreen &display)
{
    const QRectF all = display.virtualGeometry();
    const QRectF own = display.geometry();
    if (all.isEmpty())
        return {0, 0, 1, 1};
    return {(own.x() - all.x()) / all.width(), (own.y() - all.y()) / all.height(), own.width() / all.width(),
            own.height() / all.height()};
}

// Whether the desktop knows already what the person allows. Taken for granted where it keeps no such list; a
// sandbox doesn't let us look.
SharedResult<bool> theirWord(const QDBusConnection &bus)
{
    const QString store = u"org.freedesktop.impl.portal.PermissionStore"_s;
    auto call = QDBusMessage::createMethodCall(store, u"/org/freedesktop/impl/portal/PermissionStore"_s,
                                               store, u"Lookup"_s);
    call.setArguments({u"screenshot"_s, u"screenshot"_s});
    constexpr int patienceMilliseconds = 3000;
    SharedResult<bool> word;
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, patienceMilliseconds), qGuiApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, word]() mutable {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        const bool isUnknown = reply.errorName() == "org.freedesktop.portal.Error.NotFound"_L1;
        if (watcher->isError() || !reply.signature().startsWith("a{sas}"_L1))
            return word.resolve(!isUnknown && !DesktopKind::isSandboxed());
        const auto programs = qdbus_cast<QMap<QString, QStringList>>(reply.arguments().constFirst());
        word.resolve(programs.contains(Product::desktopId));
    });
    return word;
}

// Ends the question on every way out.
class Asking {
public:
    explicit Asking(const QDBusConnection &bus)
        : m_question(std::make_unique<PortalScreenshot>(bus))
    {}
    ~Asking() { PortalScreenshot::abandon(std::move(m_question)); }
    Asking(const Asking &) = delete;
    Asking &operator=(const Asking &) = delete;

    [[nodiscard]] PortalScreenshot &question() { return *m_question; }

private:
    std::unique_ptr<PortalScreenshot> m_question;
};

} // namespace

PortalScreenCapture::PortalScreenCapture(QDBusConnection bus, Clock &clock, Work &work)
    : m_bus(std::move(bus))
    , m_clock(clock)
    , m_work(work)
{}

bool PortalScreenCapture::isHiddenByFullScreen() const
{
    return OwnWindows::fillMainDisplay();
}

QCoro::Task<Picture> PortalScreenCapture::capture(std::stop_token stop)
{
    if (!m_bus.isConnected())
        throw ScreenCaptureFailure(Reason::blind, "the session's bus is gone");
    const QScreen *display = QGuiApplication::primaryScreen();
    const QRectF part = display ? partOf(*display) : QRectF(0, 0, 1, 1);
    const double pixelsPerPoint = display ? display->devicePixelRatio() : 1;
    const QString path = co_await pictureFile(stop);
    const std::function<Picture()> reading = [path, part, pixelsPerPoint] {
        ScreenPicture picture{.form = ScreenPicture::Form::file,
                              .bytes = takenFrom(path),
                              .size = {},
                              .part = part,
                              .pixelsPerPoint = pixelsPerPoint};
        return std::make_shared<const ScreenPicture>(std::move(picture));
    };
    // No stop: the file has to go.
    const std::stop_token never;
    std::optional<Picture> picture =
        co_await m_work.ask<Picture>(reading, longestRead, never, Work::Outside::Files);
    if (!picture)
        throw ScreenCaptureFailure(Reason::failed, "the portal's file can't be read in time");
    Picture taken = *std::move(picture);
    co_return taken;
}

// A desktop that asks the person does so once, and may ask only for the program that they look at: GNOME
// does.
QCoro::Task<QString> PortalScreenCapture::pictureFile(std::stop_token stop)
{
    if (!m_hasTheirWord) {
        const SharedResult<bool> word = theirWord(m_bus);
        m_hasTheirWord = co_await word.wait(stop);
    }
    if (!m_hasTheirWord) {
        const QString withOurWindows = co_await askedFor(stop);
        QFile::remove(withOurWindows);
        m_hasTheirWord = true;
    }
    const OwnWindows::Hidden hidden;
    if (hidden.isNeeded()) {
        co_await pause(m_clock, timeToHide, stop);
    }
    QString file = co_await askedFor(stop);
    co_return file;
}

QCoro::Task<QString> PortalScreenCapture::askedFor(std::stop_token stop)
{
    Asking asking(m_bus);
    PortalScreenshot &question = asking.question();
    const SharedResult<PortalScreenshot::End> answer = question.end();
    const std::optional<PortalScreenshot::End> end = co_await answer.wait(m_clock, longestQuestion, stop);
    if (!end)
        throw ScreenCaptureFailure(Reason::failed, "nobody answered the portal");
    if (*end == PortalScreenshot::End::Taken) {
        QString file = question.takeFile();
        co_return file;
    }
    const Reason reason = *end == PortalScreenshot::End::Refused   ? Reason::refused
                          : *end == PortalScreenshot::End::Absent  ? Reason::absent
                          : *end == PortalScreenshot::End::BusGone ? Reason::blind
                                                                   : Reason::failed;
    throw ScreenCaptureFailure(reason, question.words().toStdString());
}

} // namespace morvane
