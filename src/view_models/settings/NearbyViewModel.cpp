#include "view_models/settings/NearbyViewModel.h"

#include "ai/nearby/ChosenServer.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostModels = 60; // that are laid out; the picker of the server has them all

} // namespace

NearbyViewModel::NearbyViewModel(ServiceBrowsing &services, HttpSessionProviding &network,
                                 SettingsStore &settings, Clock &clock, Work &work, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_browser(services, clock)
    , m_server(network, work)
{
    connect(&m_browser, &NetworkComputerBrowser::changed, this, [this] {
        m_computers.show(m_browser.computers());
        Q_EMIT searchChanged();
    });
    connect(&m_server, &ModelServerBrowser::changed, this, &NearbyViewModel::answerChanged);
}

QString NearbyViewModel::searchNotice() const
{
    if (m_browser.localNetworkDenied())
        return u"%1 does not let %2 search the network. Type the computer's name or address instead."_s.arg(
            DesktopWords::here().searcher, Product::name);
    if (m_browser.browseFailure() && m_browser.isSearchMissing())
        return u"%1 %2 Type the computer's name or address instead."_s.arg(
            *m_browser.browseFailure(), DesktopWords::here().searchMissing);
    if (m_browser.browseFailure())
        return u"%1 Type the computer's name or address instead."_s.arg(*m_browser.browseFailure());
    if (!m_hasSearched || !m_browser.computers().empty())
        return {};
    return isSearching() ? u"Looking around your network…"_s
                         : u"No other computer showed itself. Type its name or address instead."_s;
}

QStringList NearbyViewModel::apps()
{
    return {u"Ollama"_s, u"LM Studio"_s, u"Something else"_s};
}

void NearbyViewModel::setApp(int app)
{
    if (app < 0 || app >= apps().size() || app == this->app())
        return;
    m_app = static_cast<ModelServerApp>(app);
    Q_EMIT appChanged();
    forgetAnswer();
}

void NearbyViewModel::setPlace(const QString &place)
{
    if (place == m_place)
        return;
    m_place = place;
    Q_EMIT placeChanged();
    forgetAnswer();
}

bool NearbyViewModel::isAsking() const
{
    return std::holds_alternative<ModelServerBrowser::Searching>(m_server.state());
}

QString NearbyViewModel::problem() const
{
    const auto *failed = std::get_if<ModelServerBrowser::Failed>(&m_server.state());
    return failed ? failed->text : QString();
}

QStringList NearbyViewModel::models() const
{
    const auto *found = std::get_if<ModelServerBrowser::Found>(&m_server.state());
    return found ? found->models.mid(0, mostModels) : QStringList();
}

void NearbyViewModel::search()
{
    m_hasSearched = true;
    m_browser.start();
}

void NearbyViewModel::leave()
{
    m_browser.stop();
}

void NearbyViewModel::pick(int row)
{
    const auto &computers = m_browser.computers();
    if (row < 0 || static_cast<std::size_t>(row) >= computers.size())
        return;
    setPlace(computers[static_cast<std::size_t>(row)].hostname);
    ask();
}

void NearbyViewModel::ask()
{
    m_taken.clear();
    m_server.probe(m_place, m_app);
}

void NearbyViewModel::take(const QString &model)
{
    const auto *found = std::get_if<ModelServerBrowser::Found>(&m_server.state());
    if (!found || !found->models.contains(model))
        return;
    ChosenServer::use(m_settings, found->address, model);
    m_taken = u"Replies now come from %1 on %2."_s.arg(model, QUrl(found->address).host());
    Q_EMIT answerChanged();
}

// What was said of one place or program says nothing of another.
void NearbyViewModel::forgetAnswer()
{
    m_taken.clear();
    m_server.reset();
}

} // namespace morvane
