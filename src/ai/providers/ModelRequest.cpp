#include "ai/providers/ModelRequest.h"

#include "ai/contract/BaseURL.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

HttpRequest ModelRequest::to(QUrl url, const std::optional<QString> &apiKey)
{
    static const QByteArray agent = (Product::name + "/"_L1 + Product::version).toLatin1();
    HttpRequest request;
    request.url = std::move(url);
    request.headers.push_back({"User-Agent", agent});
    if (apiKey && !apiKey->isEmpty())
        request.headers.push_back({"Authorization", "Bearer " + apiKey->toUtf8()});
    request.followsRedirect = BaseURL::mayRedirect;
    return request;
}

} // namespace morvane
