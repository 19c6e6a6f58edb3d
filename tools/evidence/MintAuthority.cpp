// `mint-authority FOLDER` makes the development program's authority anew: see tools/private_cloud/README.md.

#include "evidence/EvidenceAuthority.h"
#include "utils/text/UniversalTime.h"

#include <QDir>

#include <cstdio>
#include <stdexcept>

using namespace morvane;
using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fputs("usage: mint-authority FOLDER\n", stderr);
        return 2;
    }
    try {
        const QDateTime from = UniversalTime::at(QDate(2025, 1, 1));
        const QDateTime to = UniversalTime::at(QDate(2075, 1, 1));
        EvidenceAuthority::mint(u"Development"_s, from, to).write(QString::fromLocal8Bit(argv[1]));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "mint-authority: %s\n", error.what());
        return 1;
    }
    return 0;
}
