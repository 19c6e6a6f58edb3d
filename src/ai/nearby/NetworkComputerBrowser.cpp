#include "ai/nearby/NetworkComputerBrowser.h"

#include "async/Clock.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The first that names a computer gives it its display name.
constexpr std::array serviceTypes{"_companion-link._tcp"_L1, "_ssh._tcp"_L1, "_smb._tcp"_L1, "_rfb._tcp"_L1};

NetworkComputerBrowser::Computer computerOf(const BrowsedService &service)
{
    return {service.name, service.host.isEmpty() ? service.name + ".local"_L1 : service.host};
}

bool isBefore(const NetworkComputerBrowser::Computer &a, const NetworkComputerBrowser::Computer &b)
{
    const int order = QString::localeAwareCompare(a.displayName.toCaseFolded(), b.displayName.toCaseFolded());
    return order != 0 ? order < 0 : a.hostname < b.hostname;
}

} // namespace

NetworkComputerBrowser::NetworkComputerBrowser(ServiceBrowsing &services, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_clock(clock)
{}

NetworkComputerBrowser::~NetworkComputerBrowser() = default;

void NetworkComputerBrowser::start()
{
    ++m_sweepGeneration;
    m_browsers.clear();
    m_found.clear();
    m_deniedTypes.clear();
    m_failedTypes.clear();
    m_unsearchedTypes.clear();
    m_computers.clear();
    m_localNetworkDenied = false;
    m_isSearchMissing = false;
    m_browseFailure.reset();
    m_settling = m_clock.after(settlingTime, [this] { finish(); });
    for (const auto type : serviceTypes)
        browse(type);
    Log::info(Log::Category::AIProvider, "Started browsing the local network for computers"_L1);
    Q_EMIT changed();
}

void NetworkComputerBrowser::stop()
{
    ++m_sweepGeneration;
    if (isBrowsing())
        finish();
}

void NetworkComputerBrowser::browse(const QString &type)
{
    const auto ofThisSweep = [this, generation = m_sweepGeneration] {
        return generation == m_sweepGeneration;
    };
    m_browsers[type] =
        m_services.browse(type, {.resultsChanged =
                                     [this, type, ofThisSweep](std::vector<BrowsedService> all) {
                                         if (ofThisSweep())
                                             take(type, std::move(all));
                                     },
                                 .failed =
                                     [this, type, ofThisSweep](const BrowseFailure &failure) {
                                         if (ofThisSweep())
                                             fail(QString(type), failure);
                                     }});
}

void NetworkComputerBrowser::take(const QString &type, std::vector<BrowsedService> services)
{
    m_found[type] = std::move(services);
    merge();
}

// `type` is a copy, since the handler that holds it goes with its browser.
void NetworkComputerBrowser::fail(const QString &type, const BrowseFailure &failure)
{
    Log::info(Log::Category::AIProvider, "Bonjour browse failed for %{public}s: %{public}s"_L1,
              {type, failure.description});
    m_browsers.erase(type);
    switch (failure.reason) {
    case BrowseFailure::Reason::refused:
        m_deniedTypes.insert(type);
        break;
    case BrowseFailure::Reason::noSearch:
        m_unsearchedTypes.insert(type);
        [[fallthrough]];
    case BrowseFailure::Reason::failed:
        m_failedTypes.insert(type);
        break;
    }
    judgeFailures();
    Q_EMIT changed();
}

// With no type left there is nothing to wait for either.
void NetworkComputerBrowser::judgeFailures()
{
    if (m_deniedTypes.size() + m_failedTypes.size() < serviceTypes.size())
        return;
    m_localNetworkDenied = m_failedTypes.empty();
    m_isSearchMissing = m_unsearchedTypes.size() == serviceTypes.size();
    if (!m_localNetworkDenied)
        m_browseFailure = u"%1 could not search this network."_s.arg(DesktopWords::here().searcher);
    m_settling.reset();
}

// Some programs announce a service by a name of their own, so computers are told apart by their hosts.
void NetworkComputerBrowser::merge()
{
    std::vector<Computer> computers;
    for (const auto type : serviceTypes) {
        for (const BrowsedService &service : m_found[type]) {
            Computer computer = computerOf(service);
            const auto isKnown = [&](const Computer &other) {
                return other.hostname.compare(computer.hostname, Qt::CaseInsensitive) == 0;
            };
            if (std::none_of(computers.begin(), computers.end(), isKnown))
                computers.push_back(std::move(computer));
        }
    }
    std::sort(computers.begin(), computers.end(), isBefore);
    if (m_computers == computers)
        return;
    m_computers = std::move(computers);
    Q_EMIT changed();
}

void NetworkComputerBrowser::finish()
{
    m_settling.reset();
    m_browsers.clear();
    Q_EMIT changed();
}

} // namespace morvane
