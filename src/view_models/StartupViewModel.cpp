#include "view_models/StartupViewModel.h"

#include "utils/text/Product.h"

#include <utility>

namespace morvane {

QString StartupViewModel::productName() const
{
    return Product::name;
}

void StartupViewModel::show(const QString &sentence, const Ways &ways)
{
    m_sentence = sentence;
    m_ways = ways;
    m_isAsking = false;
    Q_EMIT changed();
}

QString StartupViewModel::question() const
{
    return m_isAsking ? m_ways.startAfreshQuestion : QString();
}

void StartupViewModel::retry()
{
    if (m_ways.retry)
        Q_EMIT retryChosen();
}

void StartupViewModel::useFile()
{
    if (m_ways.useFile)
        Q_EMIT fileChosen();
}

void StartupViewModel::proceed()
{
    if (m_ways.proceed)
        Q_EMIT proceedChosen();
}

void StartupViewModel::startAfresh()
{
    m_isAsking = m_ways.startAfresh;
    Q_EMIT changed();
}

void StartupViewModel::answerQuestion(bool yes)
{
    if (!std::exchange(m_isAsking, false))
        return;
    Q_EMIT changed();
    if (yes)
        Q_EMIT afreshChosen();
}

} // namespace morvane
