#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace morvane {

// The licences of what the program is linked with and loads, as the installed packages tell them. Reads
// files; any thread.
class LibraryLicences {
public:
    struct Library {
        QString package;
        QString licences; // by their short names; empty where the text names none, or isn't there
        bool hasText = false;
    };

    // `list` names a package on each line, as the build wrote it; `documents` holds a folder for each package
    // with its file `copyright`.
    LibraryLicences(QString list, QString documents);

    // Of this machine, with the list that lies beside the program or where it was installed.
    [[nodiscard]] static LibraryLicences ofThisProgram();

    // In the order of the list; none where there is no list.
    [[nodiscard]] std::vector<Library> libraries() const;
    // The whole text; empty where it isn't there.
    [[nodiscard]] QString text(const QString &package) const;

private:
    QString m_list;
    QString m_documents;
};

} // namespace morvane
