#pragma once

#include "security/KeyFileFormat.h"
#include "security/SecretStoring.h"

#include <mutex>

namespace morvane {

// A file of mode 0600 that stands in where no keyring answers. It protects against other accounts of the
// machine and no more: whoever can read the disk can read it.
//
// A file that cannot be understood throws Decode and is never written over.
class KeyFile final : public SecretStoring {
public:
    explicit KeyFile(QString path);

    // Its being there is what remembers that it was chosen.
    [[nodiscard]] bool exists() const;

    // Makes it, without secrets. Does nothing when it is there.
    void create();

    // Overwrites it and removes it.
    void wipeOut();

    // The same with what a program that was killed while it wrote has left beside it. Never throws.
    void removeStrays();

    [[nodiscard]] std::vector<KeyFileFormat::Entry> entries() const;

    [[nodiscard]] Condition condition(const QString &service) override;
    void unlock(const QString &service, std::stop_token stop) override;
    [[nodiscard]] std::optional<Item> find(const QString &service, const QString &account) override;
    [[nodiscard]] std::vector<Item> items(const QString &service) override;
    void add(const QString &service, const Item &item) override;
    bool update(const QString &service, const QString &account, const QByteArray &value) override;
    bool remove(const QString &service, const QString &account) override;
    [[nodiscard]] bool keepsPresence() const override { return false; }

private:
    [[nodiscard]] std::vector<KeyFileFormat::Entry> load() const;
    void store(const std::vector<KeyFileFormat::Entry> &entries) const;

    const QString m_path;
    mutable std::mutex m_mutex; // over the file as a whole
};

} // namespace morvane
