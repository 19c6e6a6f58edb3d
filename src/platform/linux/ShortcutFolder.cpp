#include "platform/linux/ShortcutFolder.h"

#include "utils/text/Text.h"
#include "utils/text/UntrustedContent.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Why = ShortcutFolder::Refusal::Why;

namespace {

constexpr qint64 mostRead = 4096;         // bytes of a script, for its comment
constexpr qsizetype longestComment = 200; // characters

bool othersMayWrite(const struct stat &status)
{
    const bool isOurs = status.st_uid == ::geteuid() || status.st_uid == 0;
    return !isOurs || (status.st_mode & S_IWOTH) != 0;
}

bool isName(const QString &name)
{
    return !name.isEmpty() && !name.startsWith(u'.') && !name.contains(u'/') &&
           !name.contains(QChar::ReplacementCharacter) && UntrustedContent::line(name) == name;
}

std::optional<Why> refusalOfFolder(const QString &folder)
{
    struct stat status {};
    if (::stat(QFile::encodeName(folder).constData(), &status) == 0 && othersMayWrite(status))
        return Why::othersMayWriteTheFolder;
    return std::nullopt;
}

struct Judged {
    bool isShortcut = false;
    std::optional<Why> refusal = {};
};

Judged judge(const QString &folder, const QString &name)
{
    const QString path = folder + u'/' + name;
    const QByteArray encoded = QFile::encodeName(path);
    struct stat status {};
    if (::lstat(encoded.constData(), &status) != 0)
        return {};
    if (S_ISLNK(status.st_mode)) {
        const QString home = QFileInfo(folder).canonicalFilePath();
        const QString target = QFileInfo(path).canonicalFilePath();
        if (target.isEmpty() || !target.startsWith(home + u'/'))
            return {true, Why::leadsOut};
        if (::stat(encoded.constData(), &status) != 0)
            return {};
    }
    if (!S_ISREG(status.st_mode) || ::access(encoded.constData(), X_OK) != 0)
        return {};
    return {true, othersMayWrite(status) ? std::optional(Why::othersMayWriteIt) : std::nullopt};
}

} // namespace

ShortcutFolder::Listing ShortcutFolder::list(const QString &folder)
{
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir(QFile::encodeName(folder).constData()),
                                                         &::closedir);
    if (!directory)
        return {errno, {}};
    const auto ofFolder = refusalOfFolder(folder);
    Listing listing;
    errno = 0;
    while (const dirent *entry = ::readdir(directory.get())) {
        const QString name = QFile::decodeName(&entry->d_name[0]);
        const Judged judged = isName(name) ? judge(folder, name) : Judged();
        if (!judged.isShortcut)
            continue;
        const auto why = ofFolder ? ofFolder : judged.refusal;
        ShortcutRunning::Shortcut shortcut{name};
        if (why)
            shortcut.refusal = Refusal{name, *why};
        else
            shortcut.comment = comment(folder + u'/' + name);
        listing.shortcuts.push_back(std::move(shortcut));
        if (listing.shortcuts.size() == most)
            break;
        errno = 0;
    }
    std::ranges::sort(listing.shortcuts, {}, &ShortcutRunning::Shortcut::name);
    return listing;
}

QString ShortcutFolder::program(const QString &folder, const QString &name)
{
    const Judged judged = isName(name) ? judge(folder, name) : Judged();
    if (!judged.isShortcut)
        throw DesktopActionError(DesktopActionError::ShortcutNotFound{name, {}});
    const auto ofFolder = refusalOfFolder(folder);
    if (const auto why = ofFolder ? ofFolder : judged.refusal)
        throw DesktopActionError(Refusal{name, *why});
    return folder + u'/' + name;
}

QString ShortcutFolder::comment(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    const QByteArray head = file.read(mostRead);
    if (!head.startsWith("#!") || head.contains('\0'))
        return {};
    for (const QByteArray &line : head.split('\n').mid(1)) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.isEmpty())
            continue;
        if (!trimmed.startsWith('#') && !trimmed.startsWith("//"))
            return {};
        qsizetype marks = 0;
        while (marks < trimmed.size() && (trimmed[marks] == '#' || trimmed[marks] == '/'))
            ++marks;
        const QString words = UntrustedContent::line(QString::fromUtf8(trimmed.mid(marks)));
        if (!words.isEmpty() && !words.startsWith("-*-"_L1))
            return Text::prefix(words, longestComment);
    }
    return {};
}

} // namespace morvane
