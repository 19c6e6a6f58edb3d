// Stands in for libFuzzer where its runtime isn't linked: `driver FOLDER [ROUNDS]`.

#include "fuzz/Fuzz.h"

#include <QDirIterator>
#include <QFile>

#include <cstdio>
#include <functional>
#include <random>
#include <vector>

using namespace morvane;

namespace {

// One small change: a flipped bit, a new byte, a cut, a doubled stretch or an inserted byte.
void mutate(QByteArray &bytes, std::mt19937 &random)
{
    const auto byte = static_cast<char>(random());
    const qsizetype at = bytes.isEmpty() ? 0 : static_cast<qsizetype>(random() % bytes.size());
    const std::function<void()> changes[] = {
        [&] { bytes[at] = static_cast<char>(bytes[at] ^ (1U << (random() % 8))); },
        [&] { bytes[at] = byte; },
        [&] { bytes.truncate(at); },
        [&] { bytes.insert(at, bytes.mid(at, 1 + static_cast<qsizetype>(random() % 64))); },
        [&] { bytes.insert(at, byte); },
    };
    changes[bytes.isEmpty() ? 4 : random() % 5]();
}

// Without the byte that a QByteArray keeps behind its last, which would hide a read past the end.
void run(const QByteArray &input)
{
    const std::vector<char> exact(input.begin(), input.end());
    fuzz({exact.data(), static_cast<qsizetype>(exact.size())});
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<QByteArray> corpus{{}};
    for (QDirIterator files(QString::fromLocal8Bit(argc > 1 ? argv[1] : "/none"), QDir::Files);
         files.hasNext();) {
        QFile file(files.next());
        require(file.open(QFile::ReadOnly));
        corpus.push_back(file.readAll());
    }
    for (const QByteArray &seed : corpus)
        run(seed);

    const int rounds = argc > 2 ? std::atoi(argv[2]) : 4000;
    std::mt19937 random(20260301);
    for (int round = 0; round < rounds; ++round) {
        QByteArray input = corpus[random() % corpus.size()];
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes)
            mutate(input, random);
        run(input);
    }
    std::printf("%d rounds over %zu seeds\n", rounds, corpus.size());
    return 0;
}
