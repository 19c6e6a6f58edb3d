#include "view_models/settings/AboutViewModel.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "services/CrashReportService.h"
#include "services/UpdateService.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/RecentLog.h"
#include "utils/text/Product.h"
#include "view_models/settings/ChosenFile.h"

#include <QFile>
#include <QPointer>
#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString linesOf(const BugReportService::Facts &facts)
{
    QString lines;
    for (const auto &[what, value] : facts)
        lines += what + u": "_s + value + u'\n';
    return lines;
}

QString licencesOf(const LibraryLicences::Library &library)
{
    if (!library.hasText)
        return u"Its text isn't on this computer."_s;
    return library.licences.isEmpty() ? u"See the text."_s : library.licences;
}

} // namespace

AboutViewModel::AboutViewModel(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
{}

QStringList AboutViewModel::facts() const
{
    QStringList facts;
    for (const auto &[what, value] : m_services.program)
        facts += {what, value};
    return facts;
}

QString AboutViewModel::wholeText() const
{
    QString text =
        linesOf(m_services.program) + (m_updates.isEmpty() ? QString() : u"Updates: "_s + m_updates + u'\n');
    for (const LibraryLicences::Library &library : m_libraries)
        text += library.package + u": "_s + licencesOf(library) + u'\n';
    return text;
}

QStringList AboutViewModel::libraries() const
{
    QStringList rows;
    for (const LibraryLicences::Library &library : m_libraries)
        rows += {library.package, licencesOf(library)};
    return rows;
}

QString AboutViewModel::librariesNote() const
{
    return m_libraries.empty()
               ? u"This build has no list of the packages that it uses."_s
               : u"%1 packages, with the texts that came with them."_s.arg(m_libraries.size());
}

int AboutViewModel::crashCount() const
{
    return static_cast<int>(m_services.crashes.reports().size());
}

void AboutViewModel::look()
{
    Q_EMIT crashesChanged();
    if (m_updates.isEmpty())
        look(QPointer(this));
}

QCoro::Task<> AboutViewModel::look(QPointer<AboutViewModel> self)
{
    const auto find = [program = self->m_services.programPath, licences = self->m_services.licences] {
        return Findings{UpdateService::words(UpdateService::originOf(program)), licences.libraries()};
    };
    Findings findings;
    try {
        findings = co_await self->m_services.work.run(find);
    } catch (const CancelledError &) {
        co_return;
    } catch (const std::exception &) {
        co_return; // no thread to be had
    }
    if (!self)
        co_return;
    self->m_updates = findings.updates;
    self->m_libraries = std::move(findings.libraries);
    Q_EMIT self->looked();
}

void AboutViewModel::readLicence(const QString &package)
{
    const QString text = m_services.licences.text(package);
    read({package, text.isEmpty() ? u"The text of this licence isn't on this computer."_s : text});
}

void AboutViewModel::readReleaseNotes()
{
    readDocument(u"Release notes"_s, u"CHANGELOG.md"_s);
}

void AboutViewModel::readThreatModel()
{
    readDocument(u"What is protected, and what stays open"_s, u"THREAT-MODEL.md"_s);
}

void AboutViewModel::readGuide()
{
    readDocument(u"How to use "_s + Product::name, u"USING.md"_s);
}

void AboutViewModel::readDocument(const QString &title, const QString &name)
{
    static const QRegularExpression picture(u"^!\\[[^\\n]*\\n"_s, QRegularExpression::MultilineOption);
    QFile file(u":/qt/qml/Morvane/documents/"_s + name);
    if (file.open(QIODevice::ReadOnly)) // the pictures of the window aren't in the program
        read({title, QString::fromUtf8(file.readAll()).remove(picture), true});
}

QString AboutViewModel::newestCrash() const
{
    const QStringList reports = m_services.crashes.reports();
    return reports.isEmpty() ? QString() : m_services.crashes.text(reports.constFirst());
}

void AboutViewModel::readCrash()
{
    if (crashCount() > 0)
        read({u"Report of a crash"_s, newestCrash(), false, u"morvane-crash.txt"_s});
}

void AboutViewModel::deleteCrashes()
{
    m_services.crashes.removeAll();
    Q_EMIT crashesChanged();
}

void AboutViewModel::reportProblem()
{
    read({u"Report of a problem"_s,
          m_services.problems.text(m_services.program, m_services.desktop(), RecentLog::lines()), false,
          u"morvane-problem.txt"_s});
}

void AboutViewModel::read(const Reader &reader)
{
    m_reader = reader;
    m_saveProblem.clear();
    Q_EMIT readerChanged();
}

void AboutViewModel::closeReader()
{
    read({});
}

bool AboutViewModel::save(const QUrl &file)
{
    try {
        PrivateFile::write(ChosenFile::path(file), m_reader.text.toUtf8());
        m_saveProblem.clear();
    } catch (const FileError &) {
        m_saveProblem = u"The file could not be saved there."_s;
    }
    Q_EMIT readerChanged();
    return m_saveProblem.isEmpty();
}

} // namespace morvane
