#include "fuzz/Fuzz.h"

#include "persistence/ObjectContext.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "support/FakeFieldSealing.h"

#include <QFile>
#include <QTemporaryDir>

// A damaged store opens, or is refused; reading what opens never does more than fail.
void morvane::fuzz(QByteArrayView input)
{
    static const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("store")));
    require(file.open(QFile::WriteOnly) && file.write(input.data(), input.size()) == input.size());
    file.close();
    try {
        Database database = StoreFiles::openToRead(file.fileName());
        if (StoreSchema::recognize(database) != StoreSchema::Recognition::Known)
            return;
        ObjectContext context(std::move(database), std::make_shared<FakeFieldSealing>());
        for (const auto &chat : context.fetch<Conversation>()) {
            (void)chat->title();
            for (const auto &message : chat->orderedMessages()) {
                (void)message->content();
                (void)message->sourceDomains();
            }
        }
        (void)context.fetch<ImportedDocument>();
    } catch (const DatabaseError &) {
    }
}
