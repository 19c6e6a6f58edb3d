#pragma once

#include <QJsonObject>
#include <QString>

namespace morvane {

// Where a practice runtime is told what to play and tells what became of it. The folder is the one that the
// environment names (MORVANE_RUNTIME_FOLDER), else the one that the maker of its archive chose; without one
// it plays `good` and tells nobody.
class PracticeFolder {
public:
    [[nodiscard]] static PracticeFolder ofThisProgram();

    explicit PracticeFolder(QString path)
        : m_path(std::move(path))
    {}

    // The name in the file `scenario`, read anew each time, so that a test can change it under a running
    // program; else that of MORVANE_RUNTIME_SCENARIO, else "good".
    [[nodiscard]] QString scenario() const;

    // A line of the file `journal`.
    void note(QJsonObject event) const;

    // False the first time that it is asked for this mark, true ever after.
    [[nodiscard]] bool wasMarked(const QString &mark) const;

private:
    QString m_path; // empty: none
};

} // namespace morvane
