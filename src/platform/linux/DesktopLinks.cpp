#include "platform/linux/DesktopLinks.h"

#include "async/AsyncStream.h"
#include "async/Clock.h"
#include "platform/linux/PortalCall.h"

#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Outcome = LinkOpening::Outcome;

namespace {

const QString openURI = u"org.freedesktop.portal.OpenURI"_s;
const QString noWindow; // that the portal's own questions would stand in front of

Outcome outcomeOf(PortalCall::End end)
{
    switch (end) {
    case PortalCall::End::done:
        return Outcome::opened;
    case PortalCall::End::dismissed:
        return Outcome::dismissed;
    case PortalCall::End::declined:
    case PortalCall::End::failed:
    case PortalCall::End::noPortal:
        return Outcome::failed;
    }
    return Outcome::failed;
}

QCoro::Task<PortalCall::End> askPortal(QDBusConnection bus, QUrl address, Clock *clock, std::stop_token stop)
{
    PortalCall::Question question{openURI, u"OpenURI"_s, {noWindow}};
    if (address.isLocalFile()) { // the portal takes a file by an open descriptor
        const int file = ::open(QFile::encodeName(address.toLocalFile()).constData(), O_PATH | O_CLOEXEC);
        if (file < 0)
            co_return PortalCall::End::failed;
        question.method = u"OpenFile"_s;
        question.arguments.append(QVariant::fromValue(QDBusUnixFileDescriptor(file))); // which is a copy
        ::close(file);
    } else {
        question.arguments.append(address.toString(QUrl::FullyEncoded));
    }
    const PortalCall::Answer answer = co_await PortalCall::ask(bus, question, clock, stop);
    co_return answer.end;
}

// Runs on when nobody waits for it any more, and is let go when it ends.
void startXdgOpen(const QString &target, AsyncStream<Outcome>::Producer outcome)
{
    auto *program = new QProcess;
    program->setStandardInputFile(QProcess::nullDevice());
    program->setStandardOutputFile(QProcess::nullDevice());
    program->setStandardErrorFile(QProcess::nullDevice());
    program->setChildProcessModifier([] { ::setsid(); });
    auto tell = [program, outcome](Outcome what) mutable {
        program->deleteLater();
        outcome.yield(what);
        outcome.finish();
    };
    QObject::connect(
        program, &QProcess::finished, program, [tell](int exitCode, QProcess::ExitStatus status) mutable {
            tell(status == QProcess::NormalExit && exitCode == 0 ? Outcome::opened : Outcome::failed);
        });
    QObject::connect(program, &QProcess::errorOccurred, program,
                     [tell](QProcess::ProcessError error) mutable {
                         if (error == QProcess::FailedToStart)
                             tell(Outcome::failed);
                     });
    program->start(u"xdg-open"_s, {target});
}

} // namespace

DesktopLinks::DesktopLinks(std::optional<QDBusConnection> bus, Clock &clock)
    : m_bus(std::move(bus))
    , m_clock(clock)
{}

QCoro::Task<Outcome> DesktopLinks::open(QUrl address, std::stop_token stop)
{
    Clock *clock = &m_clock;
    if (m_bus && m_bus->isConnected()) {
        const QDBusConnection bus = *m_bus;
        const PortalCall::End end = co_await askPortal(bus, address, clock, stop);
        if (end != PortalCall::End::noPortal)
            co_return outcomeOf(end);
    }
    auto [outcomes, producer] = AsyncStream<Outcome>::make();
    startXdgOpen(address.isLocalFile() ? address.toLocalFile() : address.toString(QUrl::FullyEncoded),
                 producer);
    const auto alarm = clock->after(patience, [producer = producer]() mutable {
        producer.yield(Outcome::opened);
        producer.finish();
    });
    const std::optional<Outcome> outcome = co_await outcomes.next(stop);
    co_return outcome.value_or(Outcome::failed);
}

} // namespace morvane
