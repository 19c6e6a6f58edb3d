#pragma once

#include "Options.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace morvane {

// What one run found: values read, checks made and not made, remarks, and the verdict. Texts that come from
// the evidence are passed through CaseText::quoted() by the caller.
class Report {
public:
    enum class Result { Ok, Failed, NotReached };

    explicit Report(QString title)
        : m_title(std::move(title))
    {}

    void addField(const QString &name, const QString &value);
    void addCheck(const QString &claim, Result result);
    void addRemark(const QString &remark);
    // What this run leaves open, whatever its verdict.
    void setNotChecked(const QStringList &lines) { m_notChecked = lines; }

    // A part with a verdict of its own, which is also listed above this report's.
    void addRow(const Report &row) { m_rows.push_back(row); }

    // "ok", or the failure's case and payload.
    void setVerdict(const QString &verdict) { m_verdict = verdict; }
    [[nodiscard]] const QString &verdict() const { return m_verdict; }
    [[nodiscard]] bool isOk() const { return m_verdict == QStringLiteral("ok"); }

    // For people: the last line is the verdict.
    [[nodiscard]] QString text() const;
    // For machines: one object with the same content.
    [[nodiscard]] QJsonObject json() const;

private:
    struct Line {
        QString name;
        QString value;
    };
    struct CheckLine {
        QString claim;
        Result result;
    };

    [[nodiscard]] QString body() const; // all but the verdicts

    QString m_title;
    std::vector<Line> m_fields;
    std::vector<CheckLine> m_checks;
    QStringList m_remarks;
    QStringList m_notChecked;
    std::vector<Report> m_rows;
    QString m_verdict;
};

} // namespace morvane
