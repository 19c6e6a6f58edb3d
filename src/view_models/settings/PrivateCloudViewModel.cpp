#include "view_models/settings/PrivateCloudViewModel.h"

#include "ai/routing/AIRequestRouter.h"

#include <algorithm>

namespace morvane {

PrivateCloudViewModel::PrivateCloudViewModel(AIRequestRouter &router, QObject *parent)
    : QObject(parent)
    , m_router(router)
{
    connect(&router, &AIRequestRouter::sourceChanged, this, &PrivateCloudViewModel::changed);
}

QString PrivateCloudViewModel::problem() const
{
    const std::vector<SourceOption> sources = m_router.sources();
    const auto cloud = std::ranges::find(sources, SourceOption::Choice::privateCloud, &SourceOption::choice);
    return cloud == sources.end() ? QString() : cloud->problem.value_or(QString());
}

QString PrivateCloudViewModel::notice() const
{
    const QString notice = m_router.privateCloudNotice().value_or(QString());
    return notice == problem() ? QString() : notice; // one sentence is enough
}

bool PrivateCloudViewModel::canTryAgain() const
{
    return m_router.lastEnclaveRefusal().has_value();
}

void PrivateCloudViewModel::tryAgain()
{
    m_router.tryPrivateCloudAgain();
}

} // namespace morvane
