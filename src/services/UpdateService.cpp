#include "services/UpdateService.h"

#include "utils/text/Product.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace UpdateService {

namespace {

constexpr int patience = 5000; // milliseconds

// "morvane: /usr/bin/morvane", several owners with commas between them, or a line on a diversion.
QString ownerIn(const QString &answer)
{
    static const QRegularExpression line(u"^([a-z0-9][a-z0-9+.-]+)(:[a-z0-9]+)?[:,] "_s,
                                         QRegularExpression::MultilineOption);
    return line.match(answer).captured(1);
}

} // namespace

Origin originOf(const QString &program)
{
    if (QFileInfo::exists(u"/.flatpak-info"_s))
        return {Origin::Kind::sandbox};
    QProcess database;
    database.start(u"dpkg-query"_s, {u"--search"_s, program});
    if (!database.waitForFinished(patience))
        return {};
    const QString owner = ownerIn(QString::fromUtf8(database.readAllStandardOutput()));
    return owner.isEmpty() ? Origin{} : Origin{Origin::Kind::package, owner};
}

QString words(const Origin &origin)
{
    switch (origin.kind) {
    case Origin::Kind::package:
        return u"Installed by apt, as the package “%1”. Your system's updates bring new versions; %2 itself "
               u"never "
               u"looks for any."_s.arg(origin.package, Product::name);
    case Origin::Kind::sandbox:
        return u"Installed as a Flatpak, which brings new versions; %1 itself never looks for any."_s.arg(
            Product::name);
    case Origin::Kind::ownBuild:
        return u"Built by yourself: no package owns this program. It is updated by building newer sources; "
               u"%1 itself "
               u"never looks for any."_s.arg(Product::name);
    }
    return {};
}

} // namespace UpdateService

} // namespace morvane
