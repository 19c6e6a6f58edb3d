#pragma once

#include "async/Clock.h"
#include "documents/DocumentImporting.h"
#include "documents/ExtractionProcess.h"

namespace morvane {

class Work;

class TextExtractionService final : public TextExtracting {
public:
    [[nodiscard]] QString extractText(QByteArrayView bytes, const QString &extension) const override;
};

// Has hostile formats read by `program`, one process for each file, for a minute and a half at most. `work`
// and `clock` outlive it; the service outlives its calls.
class ExtractionService final : public PDFExtracting, public ImagePreparing {
public:
    static constexpr std::chrono::seconds longestRun{90};

    ExtractionService(Work &work, Clock &clock, QString program);

    [[nodiscard]] QCoro::Task<QString> extractText(QByteArray pdf, qsizetype limit, ImportProgress progress,
                                                   std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<PreparedPicture> prepareImage(QByteArray data, std::stop_token stop) override;

private:
    QCoro::Task<ExtractionProcess::Reply> run(ExtractionProcess::Request request, ImportProgress progress,
                                              std::stop_token stop);

    Work &m_work;
    Clock &m_clock;
    QString m_program;
};

} // namespace morvane
