#include "end_to_end/CloudFixture.h"

#include "ai/routing/AIRequestRouter.h"
#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"

#include <QStringEncoder>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// In base64 a text begins at one of three places in a group of three bytes. What its neighbours decide is
// left out.
QByteArrayList base64Forms(const QByteArray &bytes)
{
    QByteArrayList forms;
    for (int ahead = 0; ahead < 3; ++ahead) {
        const qsizetype whole = (ahead + bytes.size()) / 3 * 4;
        const qsizetype first = ahead == 0 ? 0 : ahead + 1;
        const QByteArray form = (QByteArray(ahead, ' ') + bytes).toBase64();
        forms.append(form.mid(first, whole - first));
    }
    return forms;
}

} // namespace

CloudFixture::CloudFixture(const QStringList &options)
    : CloudBehind(options)
    , AppFixture(time, {DevRelay::Loopback::ipv4, cloud.port()})
{}

ChatViewModel &CloudFixture::chat() const
{
    return *state->presentation().chat;
}

QString CloudFixture::lastStatus() const
{
    return chat().messages()->messages().back()->statusRaw();
}

void CloudFixture::useCloudModel(const QString &model)
{
    state->storage().settings->setHostedRelayModel(model);
    state->assistant().router->tryPrivateCloudAgain();
}

QString CloudFixture::requestsAfter(std::size_t count)
{
    static const std::map<QByteArray, QChar> letters{{"/v1/measurements", u'L'},
                                                     {"/v1/measurements.sig", u'S'},
                                                     {"/v1/attestation", u'P'},
                                                     {"/v1/chat/completions", u'C'}};
    QString all;
    const auto &requests = cloud.requests();
    for (std::size_t i = count; i < requests.size(); ++i) {
        const QByteArray path = requests[i].target.split('?').first();
        const auto letter = letters.find(path);
        if (letter != letters.end())
            all += letter->second;
        else if (path != "/go-on")
            all += u'?';
    }
    return all;
}

void CloudFixture::expectAbsent(const QString &words, const QByteArray &bytes)
{
    const QByteArray lower = bytes.toLower(); // for the forms in digits
    for (const auto encoding :
         {QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        const QByteArray form = QStringEncoder(encoding)(words);
        EXPECT_FALSE(bytes.contains(form)) << words.toStdString();
        EXPECT_FALSE(lower.contains(form.toHex())) << words.toStdString();
        for (const QByteArray &base64 : base64Forms(form))
            EXPECT_FALSE(bytes.contains(base64)) << words.toStdString();
    }
}

} // namespace morvane
