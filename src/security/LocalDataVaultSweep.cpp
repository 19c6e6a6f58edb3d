// The sweep of LocalDataVault: stores that an older build left in the clear.

#include "security/LocalDataVault.h"
#include "security/SealedForm.h"
#include "utils/files/PrivateFile.h"
#include "utils/files/SupportFolders.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>

#include <array>
#include <limits>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct LeftoverFolder {
    QLatin1StringView name;
    std::array<QLatin1StringView, 6> files; // unused places stay empty
};

// Most of these files belong to modules that have left the application; nothing of theirs may stay readable.
constexpr std::array<LeftoverFolder, 2> leftovers{{
    {Product::storeFolder,
     {"code.json"_L1, "email-accounts.json"_L1, "gift-people.json"_L1, "gift-people.backup.json"_L1,
      "subscriptions.json"_L1, "telegram-notebook.json"_L1}},
    {Product::serviceName,
     {"memory.md"_L1, "memory-open.md"_L1, "memory-work.md"_L1, "memory-personal.md"_L1,
      "instructions.txt"_L1}}, // readable when it was written while sealing failed
}};

constexpr QLatin1StringView appDataFolder = "code-app-data"_L1; // below the store folder

bool beginsWithMagic(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(SealedForm::fileMagic.size()) == SealedForm::fileMagic;
}

QStringList namesIn(const LeftoverFolder &folder, const QString &path)
{
    QStringList names;
    for (const auto file : folder.files) {
        if (!file.isEmpty())
            names.append(file);
    }
    if (folder.name != Product::storeFolder)
        return names;
    const QDir appData(path + u'/' + appDataFolder);
    for (const QString &entry : appData.entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
        if (entry.endsWith(".json"_L1))
            names.append(appDataFolder + u'/' + entry);
    }
    return names;
}

} // namespace

QStringList LocalDataVault::sealLeftovers(const QString &base) const
{
    const QString root = base.isEmpty() ? SupportFolders::standard().data : base;
    QStringList sealedNames;
    for (const LeftoverFolder &folder : leftovers) {
        const QString path = root + u'/' + folder.name;
        for (const QString &name : namesIn(folder, path)) {
            if (sealLeftover(path + u'/' + name))
                sealedNames.append(name);
        }
    }
    return sealedNames;
}

bool LocalDataVault::sealLeftover(const QString &path) const
{
    if (!QFile::exists(path) || beginsWithMagic(path))
        return false;
    try {
        const auto plain = PrivateFile::read(path, std::numeric_limits<int>::max());
        if (!plain || isLocked())
            return false;
        QByteArray candidate;
        try {
            candidate = seal(*plain);
        } catch (const std::exception &) {
            return false; // the candidate would be the plain contents, which are there already
        }
        writePrivate(candidate, path);
        return true;
    } catch (const FileError &) {
        return false;
    }
}

} // namespace morvane
