#include "view_models/StartupViewModel.h"

#include "utils/text/Product.h"

namespace morvane {

QString StartupViewModel::productName() const
{
    return Product::name;
}

void StartupViewModel::show(const QString &sentence, bool canRetry)
{
    m_sentence = sentence;
    m_canRetry = canRetry;
    Q_EMIT changed();
}

void StartupViewModel::retry()
{
    if (m_canRetry)
        Q_EMIT retryChosen();
}

} // namespace morvane
