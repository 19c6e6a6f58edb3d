#include "view_models/settings/LocalModelWords.h"

#include "ai/local/ModelLadder.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = LocalModelService::Phase::Kind;
using Runtime = SetupPlan::Runtime;
using Vision = LocalModelService::VisionSidecarState::Kind;

namespace {

QString counted(qint64 count, const QString &thing)
{
    return u"about %1 %2%3"_s.arg(QLocale().toString(count), thing, count == 1 ? QString() : u"s"_s);
}

// The model, and what it takes while it is loaded.
QString inUse(const LocalModelService &service)
{
    const QString model = service.phase().text;
    for (const ServerModel &listed : service.models()) {
        if (listed.name != model || !listed.bytes)
            continue;
        const QString disk =
            u"%1, %2 on the disk"_s.arg(model, LocalModelWords::size(quint64(*listed.bytes)));
        const auto memory = service.memoryInUse();
        return memory && *memory > 0 ? u"%1, %2 of memory in use"_s.arg(disk, LocalModelWords::size(*memory))
                                     : disk + u", not in memory now"_s;
    }
    return model;
}

} // namespace

QString LocalModelWords::size(std::uint64_t bytes)
{
    return QLocale().formattedDataSize(static_cast<qint64>(bytes), bytes < 1'000'000'000 ? 0 : 1,
                                       QLocale::DataSizeSIFormat);
}

QString LocalModelWords::title(const LocalModelService &service)
{
    switch (service.phase().kind) {
    case Kind::unknown:
        return service.isSetUp() ? u"Stopped"_s : u"Not set up"_s;
    case Kind::notSetUp:
        return u"Not set up"_s;
    case Kind::downloadingRuntime:
        return u"Fetching the program that runs models"_s;
    case Kind::startingRuntime:
        return u"Starting"_s;
    case Kind::downloadingModel:
        return u"Fetching %1"_s.arg(service.phase().text);
    case Kind::ready:
        return u"Ready"_s;
    case Kind::failed:
        return u"Something is in the way"_s;
    }
    return {};
}

QString LocalModelWords::explanation(const LocalModelService &service)
{
    const QStringView device = DesktopWords::here().device;
    switch (service.phase().kind) {
    case Kind::unknown:
    case Kind::notSetUp:
        if (service.isSetUp())
            return u"The local model answers again once it is started."_s;
        return u"One press finds or installs what runs a model, and fetches one that suits this %1. What you "
               u"write then stays here."_s.arg(device);
    case Kind::downloadingRuntime:
    case Kind::downloadingModel:
        return progress(service.figures());
    case Kind::startingRuntime:
        return u"Waiting for the model's server to answer."_s;
    case Kind::ready:
        return inUse(service);
    case Kind::failed:
        return service.phase().text;
    }
    return {};
}

QString LocalModelWords::progress(const TransferFigures &figures)
{
    QStringList parts;
    if (figures.total && *figures.total > 0)
        parts += u"%1 of %2"_s.arg(size(quint64(figures.done)), size(quint64(*figures.total)));
    else if (figures.done > 0)
        parts += size(quint64(figures.done));
    if (figures.bytesPerSecond)
        parts += size(quint64(*figures.bytesPerSecond)) + u"/s"_s;
    if (figures.timeLeft)
        parts += time(*figures.timeLeft) + u" left"_s;
    return parts.isEmpty() ? u"Beginning…"_s : parts.join(u" · "_s);
}

QString LocalModelWords::time(std::chrono::seconds duration)
{
    if (duration < 1min)
        return u"less than a minute"_s;
    if (duration < 2h)
        return counted(std::chrono::round<std::chrono::minutes>(duration).count(), u"minute"_s);
    return counted(std::chrono::round<std::chrono::hours>(duration).count(), u"hour"_s);
}

QString LocalModelWords::question(const SetupPlan &plan, const LocalRuntimeValues &values)
{
    if (plan.toFetch() == 0 && plan.runtime != Runtime::toDownload)
        return {};
    QStringList lines;
    if (plan.runtime == Runtime::toDownload) {
        const QString bytes = plan.runtimeBytes ? u", "_s + size(*plan.runtimeBytes) : QString();
        lines += u"The program that runs models, Ollama %1%2, from %3. It is checked before it runs."_s.arg(
            values.version, bytes, values.releaseOrigin.host());
        if (plan.alreadyFetched > 0)
            lines += u"%1 of it is here already."_s.arg(size(plan.alreadyFetched));
    } else if (plan.runtime == Runtime::found) {
        lines += u"The Ollama that you installed runs it."_s;
    }
    if (plan.modelBytes > 0)
        lines += u"The model %1, %2, from Ollama's library."_s.arg(plan.model, size(plan.modelBytes));
    const QString disk = plan.freeDisk ? u" %1 are free on the disk."_s.arg(size(*plan.freeDisk)) : QString();
    lines +=
        u"%1 in all, %2 at 50 Mbit/s.%3"_s.arg(size(plan.toFetch()), time(plan.timeAtUsualSpeed()), disk);
    return lines.join(u'\n');
}

QString LocalModelWords::vision(const LocalModelService::VisionSidecarState &state)
{
    switch (state.kind) {
    case Vision::notOffered:
        return u"It needs more memory than this %1 has to spare."_s.arg(DesktopWords::here().device);
    case Vision::available:
        return u"%1, %2. Lets pictures be answered here."_s.arg(
            ModelLadder::vision(), size(ModelLadder::size(ModelLadder::vision())));
    case Vision::downloading:
        return u"Fetching %1"_s.arg(ModelLadder::vision());
    case Vision::installed:
        return u"%1 answers pictures here."_s.arg(ModelLadder::vision());
    case Vision::failed:
        return state.text;
    }
    return {};
}

QString LocalModelWords::fingerprints(const std::vector<ModelDigestPins::Change> &changes)
{
    QStringList lines;
    for (const auto &change : changes)
        lines += u"%1\nfirst seen: %2\nnow: %3"_s.arg(change.model, change.pinned, change.found);
    return lines.join(u"\n\n"_s);
}

} // namespace morvane
