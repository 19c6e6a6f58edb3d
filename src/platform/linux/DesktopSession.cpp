#include "platform/linux/DesktopSession.h"

#include "platform/linux/Displays.h"
#include "platform/linux/IdleInput.h"
#include "platform/linux/LoginSession.h"
#include "platform/linux/MachineBuses.h"
#include "platform/linux/ScreenSavers.h"

#include <algorithm>

namespace morvane {

DesktopSession::DesktopSession(QObject *parent)
    : SessionSignaling(parent)
{}

DesktopSession::DesktopSession(Buses buses, QObject *parent)
    : SessionSignaling(parent)
    , m_buses(std::move(buses))
{}

DesktopSession::~DesktopSession() = default;

void DesktopSession::startWatching()
{
    if (m_sources)
        return;
    if (!m_buses)
        m_buses = {MachineBuses::session(), MachineBuses::system()};
    m_sources = std::make_unique<Sources>();
    if (m_buses->system)
        m_sources->login = std::make_unique<LoginSession>(*m_buses->system);
    if (m_buses->session)
        m_sources->savers = std::make_unique<ScreenSavers>(*m_buses->session);
    m_sources->displays = std::make_unique<Displays>(m_buses->session, m_buses->system);
    m_sources->input = std::make_unique<IdleInput>(m_buses->session);
    if (m_sources->login)
        connect(m_sources->login.get(), &LoginSession::changed, this, &DesktopSession::changed);
    if (m_sources->savers)
        connect(m_sources->savers.get(), &ScreenSavers::changed, this, &DesktopSession::changed);
    connect(m_sources->displays.get(), &Displays::changed, this, &DesktopSession::changed);
    connect(m_sources->input.get(), &IdleInput::changed, this, &DesktopSession::changed);
}

void DesktopSession::stopWatching()
{
    m_sources.reset();
}

void DesktopSession::askIdleTime()
{
    if (m_sources)
        m_sources->input->ask();
}

// The desktop's own judgement of idleness begins late, and counts from then: the longest time is the truest.
SessionSignaling::Absence DesktopSession::absence() const
{
    if (!m_sources)
        return {};
    const auto &[login, savers, displays, input] = *m_sources;
    return {.isScreenLocked = login && login->isLocked(),
            .isScreenSaverRunning = (savers && savers->isRunning()) || input->isBlanked(),
            .isSessionInactive = login && login->isInactive(),
            .areDisplaysAsleep = displays->areAsleep() || input->areDisplaysOff(),
            .isSystemAsleep = login && login->isAsleep(),
            .idleSeconds = std::max(input->seconds(), login ? login->idleSeconds() : 0.0),
            .tellsIdleTime = input->isServed() || (login && login->tellsIdleTime())};
}

} // namespace morvane
