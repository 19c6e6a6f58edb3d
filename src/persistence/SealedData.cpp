#include "persistence/SealedData.h"

#include "persistence/ChatStoreLocation.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "security/FormerServices.h"
#include "security/SealedForm.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sqlite3.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Folders below the data folder that are the application's alone.
QStringList storeFolders()
{
    QStringList names{Product::storeFolder};
    for (const auto former : formerKeychainServices)
        names.append(former);
    return names;
}

QString asidePrefix()
{
    return Product::name + u" set aside "_s;
}

bool isSealed(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) &&
           SealedForm::isSealedFile(file.read(SealedForm::fileMagic.size() + 1));
}

QStringList sealedFilesIn(const QString &folder)
{
    QStringList names;
    for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks)) {
        if (isSealed(folder + u'/' + name))
            names.append(name);
    }
    return names;
}

enum class Unreadable { Counts, IsAnothers };

bool holdsSealedText(const QString &store, Unreadable unreadable)
{
    if (!StoreFiles::exists(store))
        return false;
    try {
        Database database = StoreFiles::openToRead(store);
        switch (StoreSchema::recognize(database)) {
        case StoreSchema::Recognition::Empty:
        case StoreSchema::Recognition::Foreign:
            return false;
        case StoreSchema::Recognition::Known:
        case StoreSchema::Recognition::Newer:
            return StoreSchema::holdsSealedText(database);
        }
    } catch (const DatabaseError &error) {
        return unreadable == Unreadable::Counts || error.code() != SQLITE_NOTADB;
    }
    return true;
}

} // namespace

bool SealedData::exists(const SupportFolders &folders)
{
    if (holdsSealedText(ChatStoreLocation::storePath(folders), Unreadable::Counts))
        return true;
    QStringList names{Product::serviceName};
    for (const QString &name : storeFolders())
        names += {name, name + u"/code-app-data"_s};
    for (const QString &name : names) {
        if (!sealedFilesIn(folders.data + u'/' + name).isEmpty())
            return true;
    }
    // Older builds shared its place with other programs.
    return holdsSealedText(ChatStoreLocation::oldStorePath(folders), Unreadable::IsAnothers);
}

QString SealedData::folderAside(const SupportFolders &folders, const QDateTime &localTime)
{
    const QString path = folders.data + u'/' + asidePrefix() + localTime.toString(u"yyyy-MM-dd HH.mm.ss"_s);
    QString name = path;
    for (int number = 2; QFileInfo::exists(name); ++number)
        name = path + u" (%1)"_s.arg(number);
    return name;
}

QStringList SealedData::foldersAside(const SupportFolders &folders)
{
    QStringList paths;
    for (const QString &name :
         QDir(folders.data).entryList({asidePrefix() + u'*'}, QDir::Dirs | QDir::NoSymLinks))
        paths += folders.data + u'/' + name;
    return paths;
}

void SealedData::setAside(const SupportFolders &folders, const QString &aside)
{
    const QString store = ChatStoreLocation::storePath(folders);
    std::optional<FileLock> lock;
    if (StoreFiles::exists(store)) {
        lock = StoreFiles::lock(store, std::chrono::milliseconds(0));
        if (!lock)
            throw FileError(FileError::Operation::Rename, EBUSY);
    }
    // A store moves with its companions in one step: with a folder.
    for (const QString &name : storeFolders()) {
        if (QFileInfo::exists(folders.data + u'/' + name))
            PrivateFile::move(folders.data + u'/' + name, aside + u'/' + name);
    }
    const QString own = u'/' + Product::serviceName + u'/';
    for (const QString &name : sealedFilesIn(folders.data + own))
        PrivateFile::move(folders.data + own + name, aside + own + name);
}

} // namespace morvane
