#include "utils/log/RecentLog.h"

#include <QMutex>
#include <QMutexLocker>

#include <chrono>
#include <deque>

namespace morvane {

namespace {

struct Line {
    double seconds;
    QString text;
};

QMutex mutex;
std::deque<Line> recent; // guarded by mutex

double secondsOfTheRun()
{
    using Ticks = std::chrono::steady_clock;
    static const auto start = Ticks::now();
    return std::chrono::duration<double>(Ticks::now() - start).count();
}

} // namespace

void RecentLog::note(QLatin1StringView category, QLatin1StringView format,
                     const std::vector<Log::Argument> &arguments)
{
    std::vector<Log::Argument> kept = arguments;
    for (Log::Argument &argument : kept) {
        if (argument.isText())
            argument = QStringLiteral("<text>");
    }
    const Line line{secondsOfTheRun(), category + QStringLiteral(": ") + Log::format(format, kept)};
    const QMutexLocker lock(&mutex);
    recent.push_back(line);
    if (recent.size() > most)
        recent.pop_front();
}

QStringList RecentLog::lines()
{
    const QMutexLocker lock(&mutex);
    QStringList lines;
    for (const Line &line : recent)
        lines += QString::number(line.seconds, 'f', 3).rightJustified(9) + QStringLiteral("  ") + line.text;
    return lines;
}

} // namespace morvane
