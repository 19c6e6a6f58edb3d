#include "network/RefusingNetworkAccessManagerFactory.h"

#include "network/EgressGate.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A reply that failed before it began.
class RefusedReply final : public QNetworkReply {
public:
    RefusedReply(QNetworkAccessManager::Operation operation, const QNetworkRequest &request, QObject *parent)
        : QNetworkReply(parent)
    {
        setOperation(operation);
        setRequest(request);
        setUrl(request.url());
        setError(ContentAccessDenied, EgressGate::refusal(u"what is drawn may not use the network"_s));
        open(ReadOnly | Unbuffered); // readers find nothing instead of a closed device
        setFinished(true);
        // Queued: the caller connects to the signals after it has the reply.
        QMetaObject::invokeMethod(
            this,
            [this] {
                Q_EMIT errorOccurred(error());
                Q_EMIT finished();
            },
            Qt::QueuedConnection);
    }

    void abort() override {}

protected:
    qint64 readData(char *, qint64) override { return -1; }
};

class RefusingManager final : public QNetworkAccessManager {
public:
    using QNetworkAccessManager::QNetworkAccessManager;

protected:
    QNetworkReply *createRequest(Operation operation, const QNetworkRequest &request, QIODevice *) override
    {
        return new RefusedReply(operation, request, this);
    }
};

} // namespace

QNetworkAccessManager *RefusingNetworkAccessManagerFactory::create(QObject *parent)
{
    return new RefusingManager(parent);
}

} // namespace morvane
