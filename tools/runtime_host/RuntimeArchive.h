#pragma once

#include <QByteArray>
#include <QString>

#include <span>

namespace morvane {

// A runtime's archive, made on the spot: a zstd-compressed tar of bin/ollama, which is the practice runtime,
// and of lib/ollama/ beside it. One kind of it is good in each way; the others hold what an unpacking must
// survive.
namespace RuntimeArchive {

struct Kind {
    QLatin1StringView name;
    QLatin1StringView summary;
};

// What goes into it besides.
struct Recipe {
    QString kind;    // of kinds()
    QString program; // the practice runtime's file
    QString folder;  // for PracticeFolder, and where a bad archive tries to put "escaped"; empty: none
};

[[nodiscard]] std::span<const Kind> kinds();
[[nodiscard]] bool has(const QString &kind);

// Throws a runtime_error when the program can't be read.
[[nodiscard]] QByteArray make(const Recipe &recipe);

} // namespace RuntimeArchive

} // namespace morvane
