#pragma once

#include <memory>

namespace morvane {

class AboutViewModel;
class BugReportService;
class CrashReportService;
class ShellViewModel;
class Work;
struct Storage;

// What the program tells of itself: reports of crashes and problems, and the page that shows them. What the
// constructor takes outlives this.
struct AboutParts {
    AboutParts(Storage &storage, Work &work);
    ~AboutParts();

    const std::unique_ptr<CrashReportService> crashReports;
    const std::unique_ptr<BugReportService> bugReports;
    const std::unique_ptr<AboutViewModel> page;

    // Offers the report of a crash that came since the last start, once. `shell` goes before this does.
    void tellOfCrash(ShellViewModel &shell);
};

} // namespace morvane
