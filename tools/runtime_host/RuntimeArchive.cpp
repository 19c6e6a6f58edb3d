#include "RuntimeArchive.h"

#include "ArchiveWriter.h"
#include "runtime/Installation.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// How a kind differs. `outside` is where it tries to put something: a folder that isn't its own.
using Spoil = void (*)(ArchiveWriter &writer, const QByteArray &outside);

void nothing(ArchiveWriter &, const QByteArray &) {}

void climb(ArchiveWriter &writer, const QByteArray &)
{
    writer.addFile("lib/ollama/../../../escaped", "x");
}

void absolute(ArchiveWriter &writer, const QByteArray &outside)
{
    writer.addFile(outside + "/escaped", "x");
}

void symbolicLinkOut(ArchiveWriter &writer, const QByteArray &outside)
{
    writer.addSymbolicLink("lib/ollama/out", outside);
    writer.addFile("lib/ollama/out/escaped", "x");
}

void symbolicLinkUp(ArchiveWriter &writer, const QByteArray &)
{
    writer.addSymbolicLink("lib/ollama/up", "../../..");
    writer.addFile("lib/ollama/up/escaped", "x");
}

void hardLinkOut(ArchiveWriter &writer, const QByteArray &outside)
{
    writer.addHardLink("lib/ollama/linked", outside + "/victim");
    writer.addFile("lib/ollama/linked", "overwritten");
}

void device(ArchiveWriter &writer, const QByteArray &)
{
    writer.addDevice("lib/ollama/null", 1, 3);
}

void pipe(ArchiveWriter &writer, const QByteArray &)
{
    writer.addPipe("lib/ollama/pipe");
}

void hole(ArchiveWriter &writer, const QByteArray &)
{
    writer.addHole("lib/ollama/libggml-large.so", 10'000'000'000);
}

void manyEntries(ArchiveWriter &writer, const QByteArray &)
{
    for (int i = 0; i < 200'000; ++i)
        writer.addFile("lib/ollama/n" + QByteArray::number(i), {});
}

struct Played {
    RuntimeArchive::Kind kind;
    Spoil spoil;
};

constexpr Played all[]{
    {{"good"_L1, "unpacks into a runtime that serves"_L1}, nothing},
    {{"dot-paths"_L1, "good too: each path begins with \"./\""_L1}, nothing},
    {{"set-user-id"_L1, "the binary's permissions have the set-user-ID and set-group-ID bits"_L1}, nothing},
    {{"no-binary"_L1, "all but bin/ollama"_L1}, nothing},
    {{"binary-link"_L1, "bin/ollama is a link to a program of the system"_L1}, nothing},
    {{"half"_L1, "the archive ends half way, and its digest is that of the half"_L1}, nothing},
    {{"not-an-archive"_L1, "words, and their digest"_L1}, nothing},
    {{"climb"_L1, "a file with \"..\" in its path"_L1}, climb},
    {{"absolute"_L1, "a file with an absolute path"_L1}, absolute},
    {{"symbolic-link-out"_L1, "a link to another folder, and a file through it"_L1}, symbolicLinkOut},
    {{"symbolic-link-up"_L1, "a link upwards, and a file through it"_L1}, symbolicLinkUp},
    {{"hard-link-out"_L1, "a hard link to a file outside, and new contents for it"_L1}, hardLinkOut},
    {{"device"_L1, "a device"_L1}, device},
    {{"pipe"_L1, "a named pipe"_L1}, pipe},
    {{"hole"_L1, "a sparse file of 10 GB"_L1}, hole},
    {{"many-entries"_L1, "200,000 empty files"_L1}, manyEntries},
};

const Played *find(const QString &name)
{
    const auto *found =
        std::ranges::find_if(all, [&name](const Played &each) { return each.kind.name == name; });
    return found == std::end(all) ? nullptr : found;
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("can't read " + path.toStdString());
    return file.readAll();
}

// A library that does nothing and can't be compressed, so that the archive has a middle to break off in.
QByteArray library(unsigned seed, qsizetype size)
{
    std::mt19937 random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    std::ranges::generate(bytes, [&random] { return static_cast<char>(random()); });
    return bytes;
}

// The files of a good archive, and contents.json, which lists the others.
class Contents {
public:
    explicit Contents(const RuntimeArchive::Recipe &recipe)
        : m_recipe(recipe)
        , m_start(recipe.kind == "dot-paths"_L1 ? "./" : "")
    {}

    void write(ArchiveWriter &writer)
    {
        writer.addFolder(m_start + "bin");
        writeBinary(writer);
        writer.addFolder(m_start + "lib");
        writer.addFolder(m_start + "lib/ollama");
        writeFile(writer, "lib/ollama/libggml-base.so.0.0.0", library(1, 300'000), 0755);
        writer.addSymbolicLink(m_start + "lib/ollama/libggml-base.so.0", "libggml-base.so.0.0.0");
        writer.addSymbolicLink(m_start + "lib/ollama/libggml-base.so", "libggml-base.so.0");
        writer.addFolder(m_start + "lib/ollama/cuda_v12");
        writeFile(writer, "lib/ollama/cuda_v12/libggml-cuda.so", library(2, 3'000'000), 0755);
        writer.addFile(m_start + "lib/ollama/contents.json", QJsonDocument(m_digests).toJson());
    }

private:
    void writeBinary(ArchiveWriter &writer)
    {
        const mode_t permissions = m_recipe.kind == "set-user-id"_L1 ? 06755 : 0755;
        if (m_recipe.kind == "binary-link"_L1)
            writer.addSymbolicLink("bin/ollama", "/bin/true");
        else if (m_recipe.kind != "no-binary"_L1)
            writeFile(writer, "bin/ollama",
                      contentsOf(m_recipe.program) + Installation::trailer(m_recipe.folder), permissions);
    }
    void writeFile(ArchiveWriter &writer, const QByteArray &path, const QByteArray &contents,
                   mode_t permissions)
    {
        const QByteArray digest = QCryptographicHash::hash(contents, QCryptographicHash::Sha256).toHex();
        m_digests.insert(QString::fromLatin1(path), QString::fromLatin1(digest));
        writer.addFile(m_start + path, contents, permissions);
    }

    const RuntimeArchive::Recipe &m_recipe;
    QByteArray m_start;
    QJsonObject m_digests;
};

} // namespace

std::span<const RuntimeArchive::Kind> RuntimeArchive::kinds()
{
    static const std::vector<Kind> kinds = [] {
        std::vector<Kind> list;
        for (const Played &each : all)
            list.push_back(each.kind);
        return list;
    }();
    return kinds;
}

bool RuntimeArchive::has(const QString &kind)
{
    return find(kind) != nullptr;
}

QByteArray RuntimeArchive::make(const Recipe &recipe)
{
    if (recipe.kind == "not-an-archive"_L1)
        return "This is no archive.\n";
    ArchiveWriter writer;
    Contents(recipe).write(writer);
    find(recipe.kind)->spoil(writer, recipe.folder.toUtf8());
    const QByteArray archive = writer.finish();
    return recipe.kind == "half"_L1 ? archive.first(archive.size() / 2) : archive;
}

} // namespace morvane
