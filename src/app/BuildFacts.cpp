#include "app/BuildFacts.h"

#include "commit/Commit.h"
#include "deployment/DeploymentValues.h"
#include "utils/text/Product.h"

#include <QtGlobal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString compiler()
{
#ifdef __clang__
    return u"Clang "_s + QStringLiteral(__clang_version__).trimmed();
#else
    return u"GCC "_s + QStringLiteral(__VERSION__);
#endif
}

} // namespace

BugReportService::Facts buildFacts()
{
    return {{u"Program"_s, Product::name + u' ' + Product::version},
            {u"Commit"_s, QString::fromLatin1(morvaneCommit)},
            {u"Deployment"_s, DeploymentValues::deploymentName},
            {u"Compiler"_s, compiler()},
            {u"Qt"_s,
             u"%1, built with %2"_s.arg(QLatin1StringView(qVersion()), QLatin1StringView(QT_VERSION_STR))}};
}

} // namespace morvane
