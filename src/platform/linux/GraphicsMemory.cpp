#include "platform/linux/GraphicsMemory.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <memory>

#include <dlfcn.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The few calls of the library that we need; its functions return 0 when all is well.
struct CardMemory {
    unsigned long long total;
    unsigned long long free;
    unsigned long long used;
};
using Card = void *;
using Plain = int();
using CountOf = int(unsigned *count);
using CardAt = int(unsigned index, Card *card);
using MemoryOf = int(Card card, CardMemory *memory);

constexpr unsigned mostCards = 64;

struct Closing {
    void operator()(void *library) const { ::dlclose(library); }
};
using Library = std::unique_ptr<void, Closing>;

template <typename Function>
Function *named(const Library &library, const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(library.get(), name));
}

std::uint64_t largest(CountOf *countOf, CardAt *cardAt, MemoryOf *memoryOf)
{
    unsigned count = 0;
    if (countOf(&count) != 0)
        return 0;
    std::uint64_t most = 0;
    for (unsigned i = 0; i < std::min(count, mostCards); ++i) {
        Card card = nullptr;
        CardMemory memory{};
        if (cardAt(i, &card) == 0 && memoryOf(card, &memory) == 0)
            most = std::max<std::uint64_t>(most, memory.total);
    }
    return most;
}

} // namespace

std::uint64_t GraphicsMemory::nvidia(const QByteArray &name)
{
    const Library library(::dlopen(name.constData(), RTLD_NOW | RTLD_LOCAL));
    if (!library)
        return 0;
    auto *const begin = named<Plain>(library, "nvmlInit_v2");
    auto *const end = named<Plain>(library, "nvmlShutdown");
    auto *const countOf = named<CountOf>(library, "nvmlDeviceGetCount_v2");
    auto *const cardAt = named<CardAt>(library, "nvmlDeviceGetHandleByIndex_v2");
    auto *const memoryOf = named<MemoryOf>(library, "nvmlDeviceGetMemoryInfo");
    if (begin == nullptr || end == nullptr || countOf == nullptr || cardAt == nullptr || memoryOf == nullptr)
        return 0;
    if (begin() != 0)
        return 0;
    const std::uint64_t most = largest(countOf, cardAt, memoryOf);
    end();
    return most;
}

std::uint64_t GraphicsMemory::amd(const QString &sys)
{
    const QDir cards(sys + u"/class/drm"_s);
    std::uint64_t most = 0;
    for (const QString &card : cards.entryList({u"card*"_s}, QDir::Dirs | QDir::System)) {
        QFile file(cards.filePath(card + u"/device/mem_info_vram_total"_s));
        if (file.open(QIODevice::ReadOnly))
            most = std::max<std::uint64_t>(most, file.read(32).trimmed().toULongLong());
    }
    return most;
}

} // namespace morvane
