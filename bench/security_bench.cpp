#include "security/KeychainService.h"
#include "security/LocalDataVault.h"
#include "utils/bytes/SealedBox.h"

#include <benchmark/benchmark.h>

#include <map>

using namespace morvane;
using namespace Qt::StringLiterals;

// Sealing and opening one field, as a list does for each row, beside the bare cipher with the library's
// base64 over the same bytes and an opened key.

namespace {

// A keyring of one process: the figures are about the vault and the read cache in front of the keyring.
class ProcessStore final : public SecretStoring {
public:
    Condition condition(const QString &) override { return Condition::Open; }
    void unlock(const QString &, std::stop_token) override {}
    std::optional<Item> find(const QString &, const QString &account) override
    {
        const auto found = m_items.find(account);
        return found == m_items.end() ? std::nullopt : std::optional(found->second);
    }
    std::vector<Item> items(const QString &) override { return {}; }
    void add(const QString &, const Item &item) override { m_items[item.account] = item; }
    bool update(const QString &, const QString &, const QByteArray &) override { return false; }
    bool remove(const QString &, const QString &account) override { return m_items.erase(account) > 0; }
    bool keepsPresence() const override { return false; }

private:
    std::map<QString, Item> m_items;
};

class NobodyThere final : public UserPresenceConfirming {
public:
    bool canConfirm() const override { return false; }
    Answer confirm(const QString &, std::stop_token) override { return Answer::Unavailable; }
};

LocalDataVault &vault()
{
    static ProcessStore store;
    static NobodyThere nobody;
    static KeychainService keychain(u"ai.morvane.macos"_s, store, nobody);
    static LocalDataVault instance(keychain);
    return instance;
}

QString textOf(int size)
{
    return QString(size, u'x');
}

void seal(benchmark::State &state, int size)
{
    const QString text = textOf(size);
    for (auto _ : state)
        benchmark::DoNotOptimize(vault().seal(text));
}

void sealYardstick(benchmark::State &state, int size)
{
    const auto key = SecretBytes::random(SealedBox::keySize);
    const QByteArray plain = textOf(size).toUtf8();
    for (auto _ : state)
        benchmark::DoNotOptimize(SealedBox::seal(plain, key).toBase64());
}

void open(benchmark::State &state, int size)
{
    const QString field = *vault().seal(textOf(size));
    for (auto _ : state)
        benchmark::DoNotOptimize(vault().open(field));
}

void openYardstick(benchmark::State &state, int size)
{
    const auto key = SecretBytes::random(SealedBox::keySize);
    const QByteArray body = SealedBox::seal(textOf(size).toUtf8(), key).toBase64();
    for (auto _ : state)
        benchmark::DoNotOptimize(SealedBox::open(*QByteArray::fromBase64Encoding(body), key));
}

} // namespace

int main(int argc, char **argv)
{
    for (const int size : {200, 1024, 16 * 1024}) {
        const std::string name = "seal_field_" + std::to_string(size);
        benchmark::RegisterBenchmark(name.c_str(), seal, size);
        benchmark::RegisterBenchmark((name + "/yardstick").c_str(), sealYardstick, size);
        const std::string opened = "open_field_" + std::to_string(size);
        benchmark::RegisterBenchmark(opened.c_str(), open, size);
        benchmark::RegisterBenchmark((opened + "/yardstick").c_str(), openYardstick, size);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
