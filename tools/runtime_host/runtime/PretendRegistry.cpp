#include "PretendRegistry.h"

#include <QCryptographicHash>
#include <QHashFunctions>

#include <cstring>
#include <random>
#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

PretendRegistry::Layer made(const QString &model, const char *part, qint64 size)
{
    PretendRegistry::Layer layer{model.toUtf8() + ' ' + part, size, {}};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (qint64 offset = 0; offset < size; offset += PretendRegistry::portion)
        hash.addData(PretendRegistry::bytes(layer, offset));
    layer.digest = hash.result().toHex();
    return layer;
}

} // namespace

std::vector<PretendRegistry::Layer> PretendRegistry::layers(const QString &model)
{
    if (model.startsWith("missing"_L1))
        throw std::runtime_error("pull model manifest: file does not exist");
    constexpr qint64 weights = 8'388'608; // enough for a disk to be full half way
    return {made(model, "weights", weights), made(model, "template", 1'429),
            made(model, "configuration", 483)};
}

QByteArray PretendRegistry::bytes(const Layer &layer, qint64 offset)
{
    const std::size_t seed = qHash(layer.seed, 0) + static_cast<std::size_t>(offset);
    std::mt19937_64 random(seed);
    QByteArray bytes(std::min(portion, layer.size - offset), Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); i += 8) {
        const std::uint64_t word = random();
        std::memcpy(bytes.data() + i, &word,
                    static_cast<std::size_t>(std::min<qsizetype>(8, bytes.size() - i)));
    }
    return bytes;
}

} // namespace morvane
