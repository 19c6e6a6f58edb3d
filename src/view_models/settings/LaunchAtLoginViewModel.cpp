#include "view_models/settings/LaunchAtLoginViewModel.h"

#include "services/LaunchAtLoginService.h"

namespace morvane {

LaunchAtLoginViewModel::LaunchAtLoginViewModel(LaunchAtLoginService *service, QObject *parent)
    : QObject(parent)
    , m_service(service)
{
    if (m_service)
        connect(m_service, &LaunchAtLoginService::changed, this, &LaunchAtLoginViewModel::changed);
}

bool LaunchAtLoginViewModel::isEnabled() const
{
    return m_service && m_service->isEnabled();
}

QString LaunchAtLoginViewModel::message() const
{
    return m_service ? m_service->message() : QString();
}

void LaunchAtLoginViewModel::setEnabled(bool on)
{
    if (m_service)
        m_service->setEnabled(on);
}

} // namespace morvane
