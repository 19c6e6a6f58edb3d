#pragma once

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace morvane {

class SettingsRepository;

// Gathers what helps with a problem into one text, which the person reads before they hand it to anybody. It
// is never sent. Main thread.
class BugReportService {
public:
    using Facts = std::vector<std::pair<QString, QString>>; // what, and how it is

    // `defaults` outlives this.
    explicit BugReportService(const SettingsRepository &defaults);

    // Of the settings only those whose values are switches, numbers or one of a few words are in it, and none
    // that holds an address, a name, a text or a choice of model. Of a fact whose value goes over lines, the
    // first line.
    [[nodiscard]] QString text(const Facts &program, const Facts &desktop, const QStringList &logLines) const;

private:
    const SettingsRepository &m_defaults;
};

} // namespace morvane
