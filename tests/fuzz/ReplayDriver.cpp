#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes contents(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// One small change: a flipped bit, a new byte, a cut, a doubled stretch or an inserted byte.
void mutate(Bytes &bytes, std::mt19937 &random)
{
    if (bytes.empty()) {
        bytes.push_back(static_cast<std::uint8_t>(random()));
        return;
    }
    const std::size_t at = random() % bytes.size();
    const auto position = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    switch (random() % 5) {
    case 0:
        bytes[at] ^= static_cast<std::uint8_t>(1U << (random() % 8));
        break;
    case 1:
        bytes[at] = static_cast<std::uint8_t>(random());
        break;
    case 2:
        bytes.resize(at);
        break;
    case 3: {
        const std::size_t length = std::min<std::size_t>(bytes.size() - at, 1 + random() % 64);
        const Bytes stretch(position, position + static_cast<std::ptrdiff_t>(length));
        bytes.insert(position, stretch.begin(), stretch.end());
        break;
    }
    default:
        bytes.insert(position, static_cast<std::uint8_t>(random()));
    }
}

} // namespace

// Stands in for libFuzzer where its runtime isn't linked: `driver FOLDER [ROUNDS]`.
int main(int argc, char **argv)
{
    std::vector<Bytes> corpus{{}};
    if (argc > 1 && std::filesystem::is_directory(argv[1])) {
        for (const auto &entry : std::filesystem::directory_iterator(argv[1]))
            corpus.push_back(contents(entry.path()));
    }
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 4000;
    for (const Bytes &seed : corpus)
        LLVMFuzzerTestOneInput(seed.data(), seed.size());

    std::mt19937 random(20260301);
    for (int round = 0; round < rounds; ++round) {
        Bytes input = corpus[random() % corpus.size()];
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes)
            mutate(input, random);
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("%d rounds over %zu seeds\n", rounds, corpus.size());
    return 0;
}
