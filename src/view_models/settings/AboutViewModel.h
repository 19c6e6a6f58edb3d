#pragma once

#include "services/BugReportService.h"
#include "services/LibraryLicences.h"

#include <QCoroTask>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace morvane {

class CrashReportService;
class Work;

// Settings > About: which program this is, who brings new versions, the licences of its libraries, and the
// reports of crashes and of problems. One text at a time is open to be read: nothing of a report leaves the
// machine but as a file that the person saves. GUI thread.
class AboutViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // "What" and "how it is" in turn.
    Q_PROPERTY(QStringList facts READ facts CONSTANT)
    Q_PROPERTY(QString wholeText READ wholeText NOTIFY looked) // all of it, to copy
    Q_PROPERTY(QString updates READ updates NOTIFY looked)     // empty until it is known
    // A package and its licences in turn.
    Q_PROPERTY(QStringList libraries READ libraries NOTIFY looked)
    Q_PROPERTY(QString librariesNote READ librariesNote NOTIFY looked)
    Q_PROPERTY(int crashCount READ crashCount NOTIFY crashesChanged)
    // What is open to be read; no title for nothing.
    Q_PROPERTY(QString readerTitle READ readerTitle NOTIFY readerChanged)
    Q_PROPERTY(QString readerText READ readerText NOTIFY readerChanged)
    Q_PROPERTY(bool readerIsDocument READ readerIsDocument NOTIFY readerChanged) // in Markdown, one of ours
    Q_PROPERTY(QString readerFileName READ readerFileName NOTIFY readerChanged)  // empty for what isn't saved
    Q_PROPERTY(QString saveProblem READ saveProblem NOTIFY readerChanged)        // empty for none

public:
    struct Services {
        CrashReportService &crashes;
        const BugReportService &problems;
        LibraryLicences licences;
        BugReportService::Facts program;
        std::function<BugReportService::Facts()> desktop;
        QString programPath;
        Work &work;
    };

    explicit AboutViewModel(Services services, QObject *parent = nullptr);

    [[nodiscard]] QStringList facts() const;
    [[nodiscard]] QString wholeText() const;
    [[nodiscard]] const QString &updates() const { return m_updates; }
    [[nodiscard]] QStringList libraries() const;
    [[nodiscard]] QString librariesNote() const;
    [[nodiscard]] int crashCount() const;
    [[nodiscard]] const QString &readerTitle() const { return m_reader.title; }
    [[nodiscard]] const QString &readerText() const { return m_reader.text; }
    [[nodiscard]] bool readerIsDocument() const { return m_reader.isDocument; }
    [[nodiscard]] const QString &readerFileName() const { return m_reader.fileName; }
    [[nodiscard]] const QString &saveProblem() const { return m_saveProblem; }

    // Reads who updates the program, and the licences. The page asks when it is shown.
    Q_INVOKABLE void look();
    Q_INVOKABLE void readLicence(const QString &package);
    Q_INVOKABLE void readReleaseNotes();
    Q_INVOKABLE void readThreatModel();
    Q_INVOKABLE void readGuide();
    Q_INVOKABLE void readCrash(); // the newest
    Q_INVOKABLE void deleteCrashes();
    // Puts a report together, to be read.
    Q_INVOKABLE void reportProblem();
    Q_INVOKABLE void closeReader();
    // False, and saveProblem says so, when the file can't be written.
    Q_INVOKABLE bool save(const QUrl &file);

    // The newest report of a crash, as it is copied.
    [[nodiscard]] QString newestCrash() const;

Q_SIGNALS:
    void looked();
    void crashesChanged();
    void readerChanged();
    void pageRequested(); // something outside of the page opened a text

private:
    struct Reader {
        QString title;
        QString text;
        bool isDocument = false;
        QString fileName = {};
    };
    struct Findings {
        QString updates;
        std::vector<LibraryLicences::Library> libraries;
    };

    static QCoro::Task<> look(QPointer<AboutViewModel> self);
    void read(const Reader &reader);
    void readDocument(const QString &title, const QString &name);

    const Services m_services;
    QString m_updates;
    std::vector<LibraryLicences::Library> m_libraries;
    Reader m_reader;
    QString m_saveProblem;
};

} // namespace morvane
