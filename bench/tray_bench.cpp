#include "WindowFigures.h"
#include "support/PrivateBus.h"

#include <QDBusVariant>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <unistd.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

// What a program has cost so far, over all of its threads.
struct Cost {
    double wakeUps = 0; // times that a thread was put on a core
    double seconds = 0; // of a core
    double mebibytes = 0;
};

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Cost costOf(qint64 process)
{
    const QString folder = u"/proc/%1/"_s.arg(process);
    Cost cost;
    for (const QString &thread : QDir(folder + u"task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QByteArray &line : contentsOf(folder + u"task/"_s + thread + u"/status"_s).split('\n')) {
            if (line.contains("voluntary_ctxt_switches:"))
                cost.wakeUps += line.mid(line.indexOf(':') + 1).trimmed().toDouble();
        }
    }
    const QList<QByteArray> figures = contentsOf(folder + u"stat"_s).split(' '); // our names hold no blank
    const double ticks = figures.value(13).toDouble() + figures.value(14).toDouble();
    cost.seconds = ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
    cost.mebibytes = contentsOf(folder + u"statm"_s).split(' ').value(1).toDouble() *
                     static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
    return cost;
}

// A minute of a program in the tray: what it costs each second, and at its end what is resident.
Cost minuteOf(const QString &program, const QStringList &arguments)
{
    PrivateBus bus;
    const PlayedService panel(bus.connection(), u"org.kde.StatusNotifierWatcher"_s,
                              [](const QDBusMessage &call, const QDBusConnection &at) {
                                  const bool asks = call.member() == "Get"_L1;
                                  at.send(asks ? call.createReply(QVariant::fromValue(QDBusVariant(true)))
                                               : call.createReply());
                                  return true;
                              });
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, QString::fromUtf8(bus.address()));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const auto wait = [](qint64 milliseconds) {
        QElapsedTimer timer;
        for (timer.start(); timer.elapsed() < milliseconds; QThread::msleep(20))
            QCoreApplication::processEvents();
    };
    // What a start begins has ended by then, and so have the threads that it used: one that ends later takes
    // its wake-ups along. Qt keeps them for half a minute.
    constexpr int settling = 35'000;
    constexpr int minute = 60'000;
    wait(settling);
    const Cost before = costOf(process.processId());
    wait(minute);
    const Cost after = costOf(process.processId());
    process.kill();
    process.waitForFinished();
    return {(after.wakeUps - before.wakeUps) / 60, (after.seconds - before.seconds) / 60, after.mebibytes};
}

const Cost &closedWindow()
{
    static const QTemporaryDir profile;
    static const Cost cost = minuteOf(QStringLiteral(MORVANE_HIDDEN_APPLICATION), {profile.path()});
    return cost;
}

const Cost &neverAWindow()
{
    static const QTemporaryDir profile;
    static const Cost cost =
        minuteOf(QStringLiteral(MORVANE_HIDDEN_APPLICATION), {profile.path(), u"hidden"_s});
    return cost;
}

const Cost &bareWindow()
{
    static const Cost cost = minuteOf(QStringLiteral(MORVANE_HIDDEN_MINIMAL), {});
    return cost;
}

// Each program is measured once, however often its figures are asked for.
void figure(benchmark::State &state, const Cost &(*cost)(), double Cost::*member, double factor,
            const char *unit)
{
    for ([[maybe_unused]] auto iteration : state)
        report(state, cost().*member * factor, unit);
}

} // namespace

BENCHMARK_CAPTURE(figure, wakes, closedWindow, &Cost::wakeUps, 1, "1/s")
    ->Name("wake_ups_in_the_tray")
    ->Iterations(1);
BENCHMARK_CAPTURE(figure, wakes, bareWindow, &Cost::wakeUps, 1, "1/s")
    ->Name("wake_ups_of_a_hidden_bare_window")
    ->Iterations(1);
BENCHMARK_CAPTURE(figure, core, closedWindow, &Cost::seconds, 100, "%")
    ->Name("processor_in_the_tray")
    ->Iterations(1);
BENCHMARK_CAPTURE(figure, core, bareWindow, &Cost::seconds, 100, "%")
    ->Name("processor_of_a_hidden_bare_window")
    ->Iterations(1);
BENCHMARK_CAPTURE(figure, resident, neverAWindow, &Cost::mebibytes, 1, "MiB")
    ->Name("resident_in_the_tray_from_the_start")
    ->Iterations(1);
BENCHMARK_CAPTURE(figure, wakes, neverAWindow, &Cost::wakeUps, 1, "1/s")
    ->Name("wake_ups_in_the_tray_from_the_start")
    ->Iterations(1);

int main(int argc, char **argv)
{
    return runOffScreen(argc, argv);
}
