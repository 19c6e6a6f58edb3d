#include "app/StoreNotices.h"

#include "app/Storage.h"
#include "async/CancelledError.h"
#include "async/Work.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/PersistenceController.h"
#include "persistence/SettingsRepository.h"
#include "persistence/StoreFiles.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"

#include <system_error>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The place of an older file that the person has been told of.
const QString toldOfOldFileKey = u"toldOfOldChatStoreAt.v1"_s;

} // namespace

StoreNotices::StoreNotices(Storage &storage, ShellViewModel &shell, Work &work)
    : m_storage(storage)
    , m_shell(shell)
    , m_work(work)
{}

void StoreNotices::start()
{
    tellOfOldFile();
    if (m_storage.persistence->isInMemory())
        return;
    m_examination =
        TaskHandle::start([this](std::stop_token stop) { return examine(QPointer(this), std::move(stop)); });
}

void StoreNotices::tellOfOldFile()
{
    const auto place = m_storage.defaults->string(ChatStoreLocation::leftOldFileKey);
    if (!place || m_storage.defaults->string(toldOfOldFileKey) == place)
        return;
    m_shell.tell(u"Chats of an older version were left in their own file."_s,
                 u"%1 found chats there and here, and mixed nothing. The older ones are in “%2”. They stay "
                 "there until you move or delete the file."_s.arg(Product::name, *place),
                 {u"OK"_s}, [this, told = *place](int) {
                     m_storage.defaults->setString(toldOfOldFileKey, told);
                     m_storage.defaults->flush();
                 });
}

QCoro::Task<> StoreNotices::examine(QPointer<StoreNotices> self, std::stop_token stop)
{
    const auto look = [path = ChatStoreLocation::storePath(self->m_storage.folders)](
                          const std::stop_token &stopped) { return StoreFiles::examine(path, stopped); };
    auto condition = StoreFiles::Condition::Unknown;
    try {
        condition = co_await self->m_work.run(look, stop);
    } catch (const CancelledError &) {
        co_return;
    } catch (const std::system_error &) {
        // No thread to be had.
    }
    if (!self)
        co_return;
    if (condition == StoreFiles::Condition::Damaged)
        self->tellOfDamage();
    else
        self->m_storage.persistence->mainContext().setWriting(Database::Writing::ToFile);
}

void StoreNotices::tellOfDamage()
{
    Log::error(Log::Category::App, "The chat store is damaged"_L1);
    m_shell.tell(u"The file with your chats is damaged."_s,
                 u"It stays as it is until you decide; new messages are kept beside it. Start Afresh sets it "
                 "aside and begins with a new file, or with your backup if you have one; nothing is deleted. "
                 "Keep Using goes on with what can still be read."_s,
                 {u"Start Afresh"_s, u"Keep Using"_s}, [this](int button) { decide(button); });
}

void StoreNotices::decide(int button)
{
    if (button == 0)
        setAside();
    else
        m_storage.persistence->mainContext().setWriting(Database::Writing::ToFile);
}

// The program that runs goes on with the file under its new name; a new one is made by the next start.
void StoreNotices::setAside()
{
    const QString path = ChatStoreLocation::storePath(m_storage.folders);
    if (const auto place = StoreFiles::setAside(path)) {
        m_shell.tell(
            u"The damaged file was set aside."_s,
            u"It is “%1”, and what you write now still goes there. Quit, put a backup in its place as "
            "“%2” if you have one, and start %3 again."_s.arg(*place, path, Product::name),
            {u"Quit"_s}, [this](int) { Q_EMIT quitChosen(); });
        return;
    }
    m_shell.tell(u"The damaged file could not be set aside."_s,
                 u"It is as it was. See that the disk has room and that its folder can be written."_s,
                 {u"Try Again"_s, u"Keep Using"_s}, [this](int button) { decide(button); });
}

} // namespace morvane
