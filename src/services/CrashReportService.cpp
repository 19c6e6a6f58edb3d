#include "services/CrashReportService.h"

#include "persistence/SettingsRepository.h"
#include "utils/files/SupportFolders.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString toldKey = u"toldOfCrash.v1"_s; // the name of the newest report that was told of
constexpr qint64 longest = 1 << 16;          // bytes

} // namespace

CrashReportService::CrashReportService(QString folder, SettingsRepository &defaults)
    : m_folder(std::move(folder))
    , m_defaults(defaults)
{}

QString CrashReportService::folderIn(const SupportFolders &folders)
{
    return folders.state + u'/' + Product::serviceName;
}

QStringList CrashReportService::reports() const
{
    return QDir(m_folder).entryList({u"crash-*.txt"_s}, QDir::Files | QDir::NoSymLinks,
                                    QDir::Name | QDir::Reversed);
}

QString CrashReportService::text(const QString &name) const
{
    QFile file(m_folder + u'/' + name);
    if (!reports().contains(name) || !file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.read(longest));
}

void CrashReportService::remove(const QString &name)
{
    if (reports().contains(name))
        QFile::remove(m_folder + u'/' + name);
}

void CrashReportService::removeAll()
{
    for (const QString &name : reports())
        remove(name);
}

QString CrashReportService::takeUntold()
{
    const QStringList all = reports();
    if (all.isEmpty() || all.constFirst() <= m_defaults.string(toldKey).value_or(QString()))
        return {};
    m_defaults.setString(toldKey, all.constFirst());
    m_defaults.flush();
    return all.constFirst();
}

} // namespace morvane
