#include "persistence/LocalDataEraser.h"

#include "persistence/ChatStoreLocation.h"
#include "persistence/SealedData.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/FormerServices.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <filesystem>

namespace morvane {

using namespace Qt::StringLiterals;

namespace LocalDataEraser {

namespace {

using Kind = Entry::Kind;

constexpr std::array entries{
    // The notes of older builds, and the files of this one.
    Entry{Kind::file, "memory-open.md"_L1},
    Entry{Kind::file, "memory-work.md"_L1},
    Entry{Kind::file, "memory-personal.md"_L1},
    Entry{Kind::file, "memory.md"_L1},
    Entry{Kind::file, "instructions.txt"_L1},
    Entry{Kind::file, "accepted-servers.sealed"_L1},
    Entry{Kind::file, "accepted-servers-dev.sealed"_L1},
    Entry{Kind::file, "voice-debug.log"_L1},
    Entry{Kind::file, "local-ai-setup.log"_L1},
    Entry{Kind::prefixed, "crash-"_L1},  // in the folder of state,
    Entry{Kind::file, "window.json"_L1}, // as this is
    // What older builds stored, and pages that have left.
    Entry{Kind::prefixed, "Morvane.store"_L1},
    Entry{Kind::file, "venice-measurements.json"_L1},
    Entry{Kind::file, "code.json"_L1},
    Entry{Kind::folder, "code-appdata"_L1},
    Entry{Kind::file, "email-accounts.json"_L1},
    Entry{Kind::file, "email-cache.json"_L1},
    Entry{Kind::prefixed, "gift-people"_L1},
    Entry{Kind::file, "subscriptions.json"_L1},
    Entry{Kind::folder, "telegram"_L1},
    Entry{Kind::file, "telegram-notebook.json"_L1},
    Entry{Kind::file, "learn.json"_L1},
    Entry{Kind::prefixed, "learn-last-unparseable-"_L1},
    Entry{Kind::file, "recurring-jobs.json"_L1},
    Entry{Kind::file, "routines.json"_L1},
    Entry{Kind::file, "price-alerts.json"_L1},
    Entry{Kind::folder, "studio"_L1, "models"_L1},
    Entry{Kind::folder, "CompanionArt"_L1},
};

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

QStringList pathsIn(const QString &folder, const auto &isMeant)
{
    QStringList paths;
    for (const QString &name : namesIn(folder)) {
        if (isMeant(name))
            paths += folder + u'/' + name;
    }
    return paths;
}

QStringList marked(const QString &folder, const QStringList &names, const Entry &entry)
{
    if (entry.kind == Kind::folder && !entry.keeping.isEmpty() && names.contains(entry.name))
        return pathsIn(folder + u'/' + entry.name,
                       [&](const QString &name) { return name != entry.keeping; });
    QStringList paths;
    for (const QString &name : names) {
        if (entry.kind == Kind::prefixed ? name.startsWith(entry.name) : name == entry.name)
            paths += folder + u'/' + name;
    }
    return paths;
}

Removed removeItem(const QString &path)
{
    std::error_code error;
    const auto count = std::filesystem::remove_all(QFile::encodeName(path).toStdString(), error);
    if (error) {
        Log::error(Log::Category::Persistence, "Delete All: could not remove %{public}s"_L1,
                   {QFileInfo(path).fileName()});
        return {.leftover = {path}};
    }
    return {.count = count > 0 ? 1 : 0};
}

Removed removeItems(const QStringList &paths)
{
    Removed removed;
    for (const QString &path : paths)
        removed += removeItem(path);
    return removed;
}

} // namespace

std::span<const Entry> table()
{
    return entries;
}

Removed &Removed::operator+=(const Removed &more)
{
    count += more.count;
    leftover += more.leftover;
    return *this;
}

Removed remove(const QString &folder)
{
    const QStringList names = namesIn(folder);
    QStringList paths;
    for (const Entry &entry : entries)
        paths += marked(folder, names, entry);
    return removeItems(paths);
}

// A start that finds an older build's store or settings takes them over, so that they must not come back.
Removed removeAll(const SupportFolders &folders)
{
    QStringList names{Product::storeFolder, Product::serviceName};
    for (const auto former : formerKeychainServices)
        names += former;
    Removed removed;
    for (const QString &name : names)
        removed += remove(folders.data + u'/' + name);
    removed += remove(folders.state + u'/' + Product::serviceName);
    removed += removeItems(ChatStoreLocation::ownOldStore(folders));
    removed += removeItems(SealedData::foldersAside(folders));
    for (const auto former : formerKeychainServices)
        removed += removeItem(UserDefaultsSettingsRepository::path(folders, former));
    return removed;
}

QStringList limits()
{
    const auto &words = DesktopWords::here();
    return {
        u"Backups made before now. %1 and other copies of this %2 still hold what was there, and no app can "
        u"reach inside them. MorvaneGPT throws away the key its data was encrypted with, so an encrypted "
        u"copy "
        u"of a file is unreadable without it. Two limits on that: restoring a whole backup from before today "
        u"brings back the key along with the files, and anything written before this version started "
        u"encrypting was never protected by it."_s.arg(words.snapshots, words.device),
        u"Anything already sent. Messages a cloud model answered and searches that reached a search engine "
        u"are not on this %1 to delete."_s.arg(words.device),
        u"Your own files. Files you exported to your Documents folder or anywhere else stay where you put "
        u"them."_s,
        u"Downloads. Anything downloaded, such as the local model runtime and its models, and files an older "
        u"version downloaded, stays, so you are not re-downloading gigabytes. They hold nothing about you."_s,
    };
}

QString shortLimits()
{
    return u"It cannot reach backups already made, anything already sent to a server, or your own files "
           u"outside MorvaneGPT. MorvaneGPT destroys the key its stored data was encrypted with, so an "
           u"encrypted leftover somewhere else is unreadable without it."_s;
}

} // namespace LocalDataEraser

} // namespace morvane
