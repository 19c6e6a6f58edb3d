#include "support/TestData.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Outcome {
    int status = -1;
    QByteArray output;
};

Outcome run(const QStringList &words, const QByteArray &input)
{
    QProcess process;
    process.start(QStringLiteral(MORVANE_PRIVATE_CLOUD), words);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(60000));
    return {process.exitCode(), process.readAllStandardOutput()};
}

TEST(PrivateCloudProgram, OpensWhatIsMeantForTheKeyAndSaysNothingElse)
{
    const QJsonArray cases = QJsonDocument::fromJson(TestData::read("ai/private_cloud/sealed.json")).array();
    const QJsonValue words = cases[2];
    const QByteArray sealed = words["sealed"_L1].toString().toLatin1();
    const QStringList open{u"open"_s, u"--private-key"_s, words["privateKey"_L1].toString()};
    const Outcome good = run(open, ' ' + sealed.toUpper() + "\n");
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.output, words["text"_L1].toString().toUtf8());

    const QString sender = QString::fromLatin1(sealed.first(130));
    const Outcome other = run({u"seal"_s, u"--public-key"_s, sender}, "for somebody else\n");
    EXPECT_EQ(other.status, 0);
    EXPECT_EQ(other.output.size(), 2 * (93 + 18) + 1);
    EXPECT_EQ(other.output.count('\n'), 1);

    for (const QByteArray &broken : {other.output, sealed.chopped(2), QByteArray("words"), QByteArray()}) {
        const Outcome refused = run(open, broken);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.output, "");
    }
    const QStringList unusable[] = {{},
                                    {u"open"_s},
                                    {u"open"_s, u"--private-key"_s, u"00"_s},
                                    {u"seal"_s, u"--public-key"_s, sender.chopped(2)}};
    for (const QStringList &line : unusable)
        EXPECT_EQ(run(line, "x").status, 2);
    EXPECT_EQ(run({u"seal"_s, u"--public-key"_s, sender}, "\xff").status, 2);
}

// The development program believes the authority whose keys this program holds, and the file lists no other.
TEST(PrivateCloudProgram, TheDevelopmentDeploymentNamesThisAuthority)
{
    const QJsonObject values = QJsonDocument::fromJson(run({u"deployment"_s}, QByteArray()).output).object();
    QFile file(QStringLiteral(MORVANE_SOURCE_DIR "/deployment/development.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject stored = QJsonDocument::fromJson(file.readAll()).object();
    EXPECT_GE(values.size(), 6);
    for (auto value = values.begin(); value != values.end(); ++value)
        EXPECT_EQ(stored.value(value.key()), value.value()) << value.key().toStdString();
}

} // namespace

} // namespace morvane
