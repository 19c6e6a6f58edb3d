#include "fuzz/Fuzz.h"

#include "persistence/ObjectContext.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "support/FakeFieldSealing.h"

#include <QFile>
#include <QTemporaryDir>

namespace morvane {

namespace {

QString written(QByteArrayView bytes)
{
    static const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("store")));
    require(file.open(QFile::WriteOnly));
    file.write(bytes.data(), bytes.size());
    return file.fileName();
}

void readAll(ObjectContext &context)
{
    for (const auto &chat : context.fetch<Conversation>()) {
        (void)chat->title();
        for (const auto &message : chat->orderedMessages()) {
            (void)message->content();
            (void)message->sourceDomains();
        }
    }
    (void)context.fetch<ImportedDocument>();
}

} // namespace

// A damaged store opens, or is refused; reading what opens never does more than fail.
void fuzz(QByteArrayView input)
{
    try {
        Database database = StoreFiles::openToRead(written(input));
        if (StoreSchema::recognize(database) != StoreSchema::Recognition::Known)
            return;
        ObjectContext context(std::move(database), std::make_shared<FakeFieldSealing>());
        readAll(context);
    } catch (const DatabaseError &) {
    }
}

} // namespace morvane
