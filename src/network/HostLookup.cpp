#include "network/HostLookup.h"

#include "async/Work.h"
#include "network/PrivateNetworkAddress.h"

namespace morvane {

HostLookup::HostLookup(Work &work)
    : HostLookup(work, PrivateNetworkAddress::resolve)
{}

HostLookup::HostLookup(Work &work, Resolve resolve)
    : m_work(&work)
    , m_resolve(std::move(resolve))
{}

QCoro::Task<QStringList> HostLookup::addresses(QString name, std::stop_token stop) const
{
    const std::function<QStringList()> question = [resolve = m_resolve, name] { return resolve(name); };
    const std::optional<QStringList> found = co_await m_work->ask<QStringList>(question, limit, stop);
    co_return found.value_or(QStringList());
}

} // namespace morvane
