#pragma once

#include "Report.h"

#include <functional>

namespace morvane {

// Runs checks in a row, reports each, and holds the first failure as the verdict.
class CheckRun {
public:
    explicit CheckRun(Report &report);

    // `require` throws a failure of the evidence unless `claim` holds. Left out once a check has failed.
    void check(const QString &claim, const std::function<void()> &require);

    [[nodiscard]] bool isGood() const { return m_report.isOk(); }

private:
    Report &m_report;
};

} // namespace morvane
