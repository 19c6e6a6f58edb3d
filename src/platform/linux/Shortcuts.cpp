#include "platform/linux/Shortcuts.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "platform/linux/ShortcutFolder.h"
#include "platform/linux/ShortcutProcess.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Identifier.h"
#include "utils/text/Text.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <cstring>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DesktopActionError::Plain;

namespace {

// Holds the working folder of one run and, beside it, the text that goes in.
class Scratch {
public:
    explicit Scratch(const QString &parent)
        : m_folder(made(parent) + u"/morvane-shortcut-XXXXXX"_s)
    {
        if (!m_folder.isValid() || !QDir(m_folder.path()).mkdir(u"work"_s))
            throw DesktopActionError(Plain::shortcutFailed);
    }
    // Also what the shortcut has put there and closed to itself.
    ~Scratch()
    {
        QDirIterator folders(m_folder.path(),
                             QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                             QDirIterator::Subdirectories);
        while (folders.hasNext())
            QFile::setPermissions(folders.next(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    [[nodiscard]] QString workingFolder() const { return m_folder.filePath(u"work"_s); }

    [[nodiscard]] QString keep(const QString &input) const
    {
        const QString path =
            m_folder.filePath(u"morvane-shortcut-input-%1.txt"_s.arg(Identifier::text(QUuid::createUuid())));
        PrivateFile::write(path, input.toUtf8());
        return path;
    }

private:
    static QString made(const QString &parent)
    {
        PrivateFile::createFolder(parent);
        return parent;
    }

    QTemporaryDir m_folder; // mode 0700
};

struct Order {
    QString folder;
    QString scratch;
    QString name;
    std::optional<QString> input;
};

QString printedBy(const Order &order, TimeoutFlag &flag, const std::stop_token &stop)
{
    const QString program = ShortcutFolder::program(order.folder, order.name);
    const Scratch scratch(order.scratch);
    QStringList arguments;
    if (order.input)
        arguments = {u"--input-path"_s, scratch.keep(*order.input)};
    const auto end = ShortcutProcess::run({program, arguments, scratch.workingFolder()}, flag, stop);
    if (end.timedOut)
        throw DesktopActionError(DesktopActionError::ShortcutTimedOut{order.name});
    if (end.exitCode != 0)
        throw DesktopActionError(Plain::shortcutFailed);
    return Text::trimmed(QString::fromUtf8(end.output));
}

} // namespace

Shortcuts::Shortcuts(QString folder, QString scratch, Clock &clock, Work &work)
    : m_folder(std::move(folder))
    , m_scratch(std::move(scratch))
    , m_clock(clock)
    , m_work(work)
{}

QCoro::Task<std::optional<std::vector<ShortcutRunning::Shortcut>>> Shortcuts::list(std::stop_token stop)
{
    using Listing = ShortcutFolder::Listing;
    const std::function<Listing()> question = [folder = m_folder] { return ShortcutFolder::list(folder); };
    std::optional<Listing> listing =
        co_await m_work.ask<Listing>(question, listPatience, stop, Work::Outside::Files);
    if (!listing) {
        Log::error(Log::Category::Shortcuts, "shortcuts list timed out after %{public}ss"_L1,
                   {QString::number(static_cast<double>(listPatience.count()) / 1000, 'f', 1)});
        co_return std::nullopt;
    }
    if (listing->status == ENOENT || listing->status == ENOTDIR)
        throw DesktopActionError(Plain::shortcutsUnavailable);
    if (listing->status != 0) {
        Log::error(Log::Category::Shortcuts, "shortcuts list failed (%d): %{public}s"_L1,
                   {listing->status, std::strerror(listing->status)});
        co_return std::nullopt;
    }
    co_return std::move(listing->shortcuts);
}

QCoro::Task<QString> Shortcuts::run(QString name, std::optional<QString> input, std::stop_token stop)
{
    const auto flag = std::make_shared<TimeoutFlag>();
    const auto watchdog = m_clock.after(runPatience, [flag] { flag->expire(); });
    const Order order{m_folder, m_scratch, name, input};
    const auto work = [order, flag](const std::stop_token &stopped) {
        return printedBy(order, *flag, stopped);
    };
    QString printed = co_await m_work.run(work, stop);
    co_return QString(printed);
}

} // namespace morvane
