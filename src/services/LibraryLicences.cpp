#include "services/LibraryLicences.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 longestText = 4 << 20; // bytes
constexpr qint64 longestList = 1 << 16;
constexpr qsizetype mostNames = 4; // of the licences of a package

QString read(const QString &path, qint64 limit)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(limit)) : QString();
}

// From the machine-readable form of such a file. Licences of parts are named as well, those of the packaging
// are not.
QString namesIn(const QString &text)
{
    static const QRegularExpression line(u"^License: *(\\S[^\\n]*)$"_s, QRegularExpression::MultilineOption);
    QStringList names;
    for (auto matches = line.globalMatch(text); matches.hasNext();)
        names += matches.next().captured(1).trimmed();
    names.removeDuplicates();
    if (names.size() > mostNames)
        names = names.first(mostNames) + QStringList{u"…"_s};
    return names.join(u", "_s);
}

} // namespace

LibraryLicences::LibraryLicences(QString list, QString documents)
    : m_list(std::move(list))
    , m_documents(std::move(documents))
{}

LibraryLicences LibraryLicences::ofThisProgram()
{
    const QString beside = QCoreApplication::applicationDirPath();
    QString list = beside + u"/morvane-packages.txt"_s;
    for (const QString &installed :
         {beside + u"/../share/morvane/packages.txt"_s, u"/usr/share/morvane/packages.txt"_s}) {
        if (!QFileInfo::exists(list))
            list = installed;
    }
    return {list, u"/usr/share/doc"_s};
}

std::vector<LibraryLicences::Library> LibraryLicences::libraries() const
{
    std::vector<Library> libraries;
    for (const QString &package : read(m_list, longestList).split(u'\n', Qt::SkipEmptyParts)) {
        const QString words = text(package);
        libraries.push_back({package, namesIn(words), !words.isEmpty()});
    }
    return libraries;
}

QString LibraryLicences::text(const QString &package) const
{
    static const QRegularExpression name(u"^[a-z0-9][a-z0-9+.-]+$"_s);
    if (!name.match(package).hasMatch())
        return {};
    return read(m_documents + u'/' + package + u"/copyright"_s, longestText);
}

} // namespace morvane
