// What there is on this machine, and what a press would add to it.

#include "ai/local/LocalModelService.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/ModelLadder.h"
#include "ai/local/RuntimeDownload.h"
#include "async/Work.h"

#include <QFileInfo>

#include <algorithm>

namespace morvane {

LocalServer LocalModelService::server() const
{
    return {&m_services.network, m_values.serverOrigin};
}

QString LocalModelService::foundRuntime() const
{
    if (m_simulateFreshSetup)
        return {};
    const auto found =
        std::find_if(m_values.foundRuntimes.begin(), m_values.foundRuntimes.end(), [](const QString &path) {
            return QFileInfo(path).isFile() && QFileInfo(path).isExecutable();
        });
    return found == m_values.foundRuntimes.end() ? QString() : *found;
}

bool LocalModelService::hasManagedRuntime() const
{
    return !m_simulateFreshSetup && m_installation.exists();
}

// A server that isn't ours comes from a runtime of the person's, wherever that lies.
bool LocalModelService::usesAMD() const
{
    return (m_isAnswering && !ownsServer()) || !foundRuntime().isEmpty();
}

QCoro::Task<> LocalModelService::knowMemory(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (m_memory)
        co_return;
    std::function<LocalMachine::Memory()> asking = [machine = &m_services.machine] {
        return machine->memory();
    };
    const LocalMachine::Memory memory = co_await m_services.work.run(std::move(asking), stop);
    check();
    m_memory = memory;
    judgeVisionSidecar();
}

QCoro::Task<LocalModelService::Models> LocalModelService::askModels(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    if (m_simulateFreshSetup && !ownsServer())
        co_return std::nullopt;
    Models models = co_await LocalServer::models(server(), stop);
    check();
    setModels(models);
    co_return models;
}

QCoro::Task<SetupPlan> LocalModelService::plan(std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    co_await knowMemory(stop);
    check();
    const Models models = co_await askModels(stop);
    check();
    SetupPlan plan;
    plan.freeDisk = m_services.machine.freeDisk(m_values.models);
    plan.foundAt = foundRuntime();
    if (models) {
        plan.runtime = SetupPlan::Runtime::answering;
    } else if (hasManagedRuntime()) {
        plan.runtime = SetupPlan::Runtime::installed;
    } else if (!plan.foundAt.isEmpty()) {
        plan.runtime = SetupPlan::Runtime::found;
    } else if (m_values.archive) {
        plan.runtime = SetupPlan::Runtime::toDownload;
        if (m_values.archive->bytes)
            plan.runtimeBytes = static_cast<std::uint64_t>(*m_values.archive->bytes);
        plan.alreadyFetched = static_cast<std::uint64_t>(QFileInfo(RuntimeDownload::path(m_values)).size());
    } else {
        plan.problem = LocalSetupError::unavailable().userMessage();
    }
    const QString recommended = ModelLadder::recommended(*m_memory, usesAMD());
    const auto fit = has(recommended) ? recommended : ModelLadder::fitting(recommended, plan.freeDisk);
    if (fit) {
        plan.model = *fit;
        plan.modelBytes = has(*fit) ? 0 : ModelLadder::size(*fit);
    } else if (plan.problem.isEmpty()) {
        plan.problem = LocalSetupError::noRoom().userMessage();
    }
    co_return plan;
}

} // namespace morvane
