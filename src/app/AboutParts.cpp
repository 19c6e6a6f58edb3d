#include "app/AboutParts.h"

#include "app/BuildFacts.h"
#include "app/Storage.h"
#include "persistence/SettingsRepository.h"
#include "platform/linux/DesktopFacts.h"
#include "services/CrashReportService.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"
#include "view_models/settings/AboutViewModel.h"

#include <QCoreApplication>

namespace morvane {

using namespace Qt::StringLiterals;

AboutParts::AboutParts(Storage &storage, Work &work)
    : crashReports(std::make_unique<CrashReportService>(CrashReportService::folderIn(storage.folders),
                                                        *storage.defaults))
    , bugReports(std::make_unique<BugReportService>(*storage.defaults))
    , page(std::make_unique<AboutViewModel>(
          AboutViewModel::Services{.crashes = *crashReports,
                                   .problems = *bugReports,
                                   .licences = LibraryLicences::ofThisProgram(),
                                   .program = buildFacts(),
                                   .desktop = desktopFacts,
                                   .programPath = QCoreApplication::applicationFilePath(),
                                   .work = work}))
{}

AboutParts::~AboutParts() = default;

void AboutParts::tellOfCrash(ShellViewModel &shell)
{
    const QString report = crashReports->takeUntold();
    if (report.isEmpty())
        return;
    shell.tell(u"%1 ended unexpectedly the last time."_s.arg(Product::name),
               u"A report of where in the program that happened is on this computer. It holds nothing of "
               u"your chats and "
               "is never sent; Settings > About has it, too."_s,
               {u"Show"_s, u"Copy"_s, u"Delete"_s, u"Keep"_s}, [this, &shell, report](int button) {
                   if (button == 0) {
                       Q_EMIT page->pageRequested();
                       page->readCrash();
                   } else if (button == 1) {
                       shell.copy(crashReports->text(report));
                   } else if (button == 2) {
                       crashReports->remove(report);
                       Q_EMIT page->crashesChanged();
                   }
               });
}

} // namespace morvane
