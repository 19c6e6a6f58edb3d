#include "persistence/ObjectContext.h"
#include "persistence/StoreFiles.h"
#include "persistence/StoreSchema.h"
#include "support/FakeFieldSealing.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace morvane {

namespace {

QString written(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("store")));
    if (!file.open(QFile::WriteOnly))
        std::abort();
    file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size));
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
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    try {
        Database database = StoreFiles::openToRead(written(data, size));
        if (StoreSchema::recognize(database) != StoreSchema::Recognition::Known)
            return 0;
        ObjectContext context(std::move(database), std::make_shared<FakeFieldSealing>());
        readAll(context);
    } catch (const DatabaseError &) {
    }
    return 0;
}

} // namespace morvane
