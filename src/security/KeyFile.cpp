#include "security/KeyFile.h"

#include "utils/bytes/SecretBytes.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <unistd.h>

namespace morvane {

namespace {

using Entry = KeyFileFormat::Entry;

constexpr qsizetype sizeLimit = qsizetype{1024} * 1024;

// Entries whose values are wiped when they leave.
class Entries {
public:
    explicit Entries(std::vector<Entry> loaded)
        : list(std::move(loaded))
    {}
    ~Entries()
    {
        for (Entry &entry : list)
            wipe(entry.value);
    }
    Entries(const Entries &) = delete;
    Entries &operator=(const Entries &) = delete;

    [[nodiscard]] auto position(const QString &service, const QString &account)
    {
        return std::find_if(list.begin(), list.end(), [&](const Entry &entry) {
            return entry.service == service && entry.account == account;
        });
    }

    std::vector<Entry> list;
};

// A copy of its own, so that each holder can wipe what it holds.
QByteArray copyOf(const QByteArray &value)
{
    return {value.constData(), value.size()};
}

void overwrite(QFile &file)
{
    file.write(QByteArray(file.size(), '\0'));
    file.flush();
    ::fsync(file.handle());
}

void wipeFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        throw SecretStoreError(KeychainStatus::InputOutput);
    // The name goes first: a file that cannot be removed must stay whole.
    if (::unlink(QFile::encodeName(path).constData()) != 0)
        throw SecretStoreError(KeychainStatus::InputOutput);
    overwrite(file);
}

} // namespace

KeyFile::KeyFile(QString path)
    : m_path(std::move(path))
{}

bool KeyFile::exists() const
{
    return QFileInfo::exists(m_path);
}

void KeyFile::create()
{
    const std::lock_guard lock(m_mutex);
    if (!exists())
        store({});
}

void KeyFile::wipeOut()
{
    const std::lock_guard lock(m_mutex);
    wipeFile(m_path);
}

void KeyFile::removeStrays()
{
    const std::lock_guard lock(m_mutex);
    const QFileInfo file(m_path);
    for (const QString &name : file.dir().entryList({file.fileName() + PrivateFile::neighbourPattern},
                                                    QDir::Files | QDir::Hidden | QDir::NoSymLinks)) {
        try {
            wipeFile(file.dir().filePath(name));
        } catch (const SecretStoreError &) {
            // Tried again at the next start.
        }
    }
}

std::vector<Entry> KeyFile::entries() const
{
    const std::lock_guard lock(m_mutex);
    return load();
}

std::vector<Entry> KeyFile::load() const
{
    try {
        // Whoever copied it here may have left it open to others.
        QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner);
        auto contents = PrivateFile::read(m_path, sizeLimit);
        if (!contents)
            return {};
        auto entries = KeyFileFormat::parse(*contents);
        wipe(*contents);
        if (!entries)
            throw SecretStoreError(KeychainStatus::Decode);
        return std::move(*entries);
    } catch (const FileError &) {
        throw SecretStoreError(KeychainStatus::InputOutput);
    }
}

void KeyFile::store(const std::vector<Entry> &entries) const
{
    QByteArray contents = KeyFileFormat::print(entries);
    QFile former(m_path); // it may hold what must not be found on the disk any more, such as a bare key
    (void)former.open(QIODevice::ReadWrite | QIODevice::ExistingOnly);
    try {
        PrivateFile::write(m_path, contents);
    } catch (const FileError &) {
        wipe(contents);
        throw SecretStoreError(KeychainStatus::InputOutput);
    }
    wipe(contents);
    if (former.isOpen())
        overwrite(former);
}

SecretStoring::Condition KeyFile::condition(const QString &)
{
    return exists() ? Condition::Open : Condition::Absent;
}

void KeyFile::unlock(const QString &, std::stop_token) {}

std::optional<SecretStoring::Item> KeyFile::find(const QString &service, const QString &account)
{
    const std::lock_guard lock(m_mutex);
    Entries entries(load());
    const auto entry = entries.position(service, account);
    if (entry == entries.list.end())
        return std::nullopt;
    return Item{account, copyOf(entry->value)};
}

std::vector<SecretStoring::Item> KeyFile::items(const QString &service)
{
    const std::lock_guard lock(m_mutex);
    const Entries entries(load());
    std::vector<Item> items;
    for (const Entry &entry : entries.list) {
        if (entry.service == service)
            items.push_back({entry.account, copyOf(entry.value)});
    }
    return items;
}

void KeyFile::add(const QString &service, const Item &item)
{
    if (item.presence == UserPresence::Required)
        throw SecretStoreError(KeychainStatus::Parameter);
    if (update(service, item.account, item.value))
        return;
    const std::lock_guard lock(m_mutex);
    Entries entries(load());
    entries.list.push_back({service, item.account, copyOf(item.value)});
    store(entries.list);
}

bool KeyFile::update(const QString &service, const QString &account, const QByteArray &value)
{
    const std::lock_guard lock(m_mutex);
    Entries entries(load());
    const auto entry = entries.position(service, account);
    if (entry == entries.list.end())
        return false;
    wipe(entry->value);
    entry->value = copyOf(value);
    store(entries.list);
    return true;
}

bool KeyFile::remove(const QString &service, const QString &account)
{
    const std::lock_guard lock(m_mutex);
    Entries entries(load());
    const auto entry = entries.position(service, account);
    if (entry == entries.list.end())
        return false;
    wipe(entry->value);
    entries.list.erase(entry);
    store(entries.list);
    return true;
}

} // namespace morvane
