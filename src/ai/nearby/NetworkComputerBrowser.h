#pragma once

#include "ai/nearby/ServiceBrowsing.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace morvane {

class Alarm;
class Clock;

// The computers that the local network shows. No model server announces itself, so a sweep asks for what an
// ordinary computer announces: sharing, remote login, files, its screen. GUI thread.
class NetworkComputerBrowser : public QObject {
    Q_OBJECT
public:
    struct Computer {
        QString displayName;
        QString hostname; // as the computer itself tells it, else its announced name under ".local"

        bool operator==(const Computer &) const = default;
    };

    // How long a sweep listens. Answers of a quiet network take well under a second.
    static constexpr std::chrono::seconds settlingTime{3};

    // Both outlive this object.
    NetworkComputerBrowser(ServiceBrowsing &services, Clock &clock, QObject *parent = nullptr);
    ~NetworkComputerBrowser() override;

    // One entry for each computer, by its display name. Kept when a sweep ends.
    [[nodiscard]] const std::vector<Computer> &computers() const { return m_computers; }
    [[nodiscard]] bool isBrowsing() const { return m_settling != nullptr; }
    // The desktop refused every search.
    [[nodiscard]] bool localNetworkDenied() const { return m_localNetworkDenied; }
    // What to show when nothing could be searched.
    [[nodiscard]] const std::optional<QString> &browseFailure() const { return m_browseFailure; }
    // Nothing could be searched because nothing on this machine searches.
    [[nodiscard]] bool isSearchMissing() const { return m_isSearchMissing; }

    // Begins a sweep; one that runs is forgotten.
    void start();
    void stop();

Q_SIGNALS:
    void changed();

private:
    void browse(const QString &type);
    void take(const QString &type, std::vector<BrowsedService> services);
    void fail(const QString &type, const BrowseFailure &failure);
    void judgeFailures();
    void merge();
    void finish();

    ServiceBrowsing &m_services;
    Clock &m_clock;
    int m_sweepGeneration = 0;
    std::map<QString, std::unique_ptr<ServiceBrowse>> m_browsers; // by type
    std::map<QString, std::vector<BrowsedService>> m_found;       // by type
    std::set<QString> m_deniedTypes;
    std::set<QString> m_failedTypes;
    std::set<QString> m_unsearchedTypes; // of those that failed
    std::unique_ptr<Alarm> m_settling;   // while a sweep runs
    std::vector<Computer> m_computers;
    bool m_localNetworkDenied = false;
    bool m_isSearchMissing = false;
    std::optional<QString> m_browseFailure;
};

} // namespace morvane
