#include "ai/nearby/ModelServerBrowser.h"

#include "ai/contract/BaseURL.h"
#include "ai/nearby/ServerAddress.h"
#include "ai/providers/ModelRequest.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ServerModels.h"
#include "async/CancelledError.h"
#include "async/Work.h"
#include "utils/log/Log.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

// Why an address gave no models. Of two addresses the later one in this list tells more about the computer.
enum class ModelServerBrowser::Miss { unreachable, notFound, silent, refused, otherReply, noModels };

namespace {

HttpRequest requestFor(const QString &address)
{
    HttpRequest request = ModelRequest::to(BaseURL::models(address), std::nullopt);
    request.headers.push_back({"Accept", "application/json"});
    request.timeout = ModelServerBrowser::patience;
    request.limit = ModelServerBrowser::patience;
    return request;
}

QString atSentenceStart(QString name)
{
    name[0] = name[0].toUpper();
    return name;
}

} // namespace

ModelServerBrowser::ModelServerBrowser(HttpSessionProviding &network, Work &work, QObject *parent)
    : QObject(parent)
    , m_session(network.session(EgressFeature::aiSetup, {}))
    , m_work(work)
{}

void ModelServerBrowser::probe(const QString &text, ModelServerApp app)
{
    m_probe = {};
    m_needsNetworkAccessHelp = false;
    m_appHint = ModelServerApps::displayName(app);
    setState(Searching{});
    const QStringList addresses = ServerAddress::candidates(text, ModelServerApps::ports(app));
    if (addresses.isEmpty())
        return fail(u"That doesn't look like a computer name or address."_s);
    m_probe = TaskHandle::start(
        [this, &addresses](std::stop_token stop) { return run(QPointer(this), addresses, std::move(stop)); });
}

void ModelServerBrowser::reset()
{
    m_probe = {};
    m_needsNetworkAccessHelp = false;
    setState(Idle{});
}

// The next address belongs to the same computer, so it is tried only when that one is there.
QCoro::Task<> ModelServerBrowser::run(QPointer<ModelServerBrowser> self, QStringList addresses,
                                      std::stop_token stop)
{
    Miss most = Miss::unreachable;
    for (const QString &address : addresses) {
        const auto session = self->m_session;
        Answer answer = co_await ask(session, &self->m_work, address, stop);
        if (!self || stop.stop_requested())
            co_return;
        const Miss *miss = std::get_if<Miss>(&answer);
        if (!miss) {
            self->take(std::move(answer));
            co_return;
        }
        most = std::max(most, *miss);
        if (*miss == Miss::notFound || *miss == Miss::silent || *miss == Miss::noModels)
            break;
    }
    self->take(most);
}

QCoro::Task<ModelServerBrowser::Answer> ModelServerBrowser::ask(std::shared_ptr<HttpSession> session,
                                                                Work *work, QString address,
                                                                std::stop_token stop)
{
    Answer answer = Miss::unreachable;
    try {
        HttpRequest request = requestFor(address);
        auto response = co_await session->send(std::move(request), stop);
        if (!ProviderFailure::isSuccess(response.status)) {
            co_await discardBody(std::move(response), stop);
            co_return Miss::otherReply;
        }
        const QByteArray body = co_await readBody(std::move(response), ServerModels::largestBody, stop);
        std::function<std::optional<QStringList>()> reading = [body] { return ServerModels::parse(body); };
        const std::optional<QStringList> names = co_await work->run(std::move(reading), stop);
        if (!names)
            answer = Miss::otherReply;
        else if (names->isEmpty())
            answer = Miss::noModels;
        else
            answer = Found{*names, address};
    } catch (const TransportError &error) {
        answer = missOf(error.code());
    } catch (const std::exception &) {
        // Stopped, which its caller sees by itself, or no thread to read the answer on.
    }
    co_return answer;
}

ModelServerBrowser::Miss ModelServerBrowser::missOf(TransportError::Code code)
{
    switch (code) {
    case TransportError::Code::HostNotFound:
        return Miss::notFound;
    case TransportError::Code::CannotConnect:
        return Miss::refused;
    case TransportError::Code::TimedOut:
        return Miss::silent;
    case TransportError::Code::ResponseTooLarge: // whatever that is, it is no list of models
        return Miss::otherReply;
    case TransportError::Code::Blocked:
    case TransportError::Code::BadURL:
    case TransportError::Code::UnsupportedURL:
    case TransportError::Code::Cancelled:
    case TransportError::Code::ConnectionLost:
    case TransportError::Code::UnreadableResponse:
    case TransportError::Code::InsecureConnection:
    case TransportError::Code::TooManyRedirects:
    case TransportError::Code::Other:
        break;
    }
    return Miss::unreachable;
}

void ModelServerBrowser::take(Answer answer)
{
    if (Found *found = std::get_if<Found>(&answer)) {
        Log::info(Log::Category::AIProvider, "Discovered %ld models on a model server"_L1,
                  {found->models.size()});
        return setState(std::move(*found));
    }
    switch (std::get<Miss>(answer)) {
    case Miss::notFound:
        return fail(u"Couldn't find a computer with that name on your network."_s);
    case Miss::refused:
        m_needsNetworkAccessHelp = true;
        return fail(
            u"Found that computer, but it's refusing connections. %1 usually needs to be told to accept "
            u"them from other computers. See the setup steps below."_s.arg(atSentenceStart(m_appHint)));
    case Miss::silent:
        return fail(u"That computer didn't respond. Is it awake and on the same network?"_s);
    case Miss::otherReply:
        return fail(
            u"Reached that computer, but no model server answered. Is %1 running there?"_s.arg(m_appHint));
    case Miss::noModels:
        return fail(u"Connected, but that server has no models installed yet."_s);
    case Miss::unreachable:
        return fail(u"Couldn't reach that computer."_s);
    }
}

void ModelServerBrowser::fail(const QString &text)
{
    setState(Failed{text});
}

void ModelServerBrowser::setState(State state)
{
    m_state = std::move(state);
    Q_EMIT changed();
}

} // namespace morvane
