#include "memory/MemoryFold.h"

#include "memory/MemoryFile.h"
#include "memory/NoteText.h"
#include "security/LocalDataVault.h"
#include "utils/log/Log.h"

#include <QFile>
#include <QSet>

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView notesFile = "memory.md"_L1;
constexpr std::array partitions{"memory-open.md"_L1, "memory-work.md"_L1, "memory-personal.md"_L1};

QStringList existing(const QString &directory)
{
    QStringList names;
    for (const auto name : partitions) {
        if (QFile::exists(directory + u'/' + name))
            names.append(name);
    }
    return names;
}

QStringList withoutRepeats(const QStringList &notes)
{
    QSet<QString> seen;
    QStringList kept;
    for (const QString &note : notes) {
        const QString form = NoteText::normalized(note);
        if (form.isEmpty() || seen.contains(form))
            continue;
        seen.insert(form);
        kept.append(note);
    }
    return kept;
}

} // namespace

void MemoryFold::run(const QString &directory, const LocalDataVault &vault)
{
    const QStringList waiting = existing(directory);
    if (waiting.isEmpty())
        return;
    const QString target = directory + u'/' + notesFile;
    QStringList sources = waiting;
    if (QFile::exists(target))
        sources.prepend(notesFile); // what can't be opened now may open later, so it is not written over
    QStringList notes;
    for (const QString &name : std::as_const(sources)) {
        const auto found = MemoryFile::notesAt(directory + u'/' + name, vault);
        if (!found) {
            Log::info(Log::Category::Persistence,
                      "Memory: %{public}s could not be opened; the merge waits"_L1, {name});
            return;
        }
        notes += *found;
    }
    try {
        vault.writeSealed(MemoryFile::compose(withoutRepeats(notes)), target);
    } catch (const std::exception &error) {
        Log::error(Log::Category::Persistence, "Memory: could not write the merged file: %s"_L1,
                   {error.what()});
        return;
    }
    for (const QString &name : waiting)
        QFile::remove(directory + u'/' + name);
    Log::info(Log::Category::Persistence, "Memory: folded %ld partition file(s) into one"_L1,
              {waiting.size()});
}

} // namespace morvane
