#include "view_models/settings/ServerModelsViewModel.h"

#include "utils/text/UserPresentableError.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

ServerModelsViewModel::ServerModelsViewModel(Lister lister, QObject *parent)
    : QObject(parent)
    , m_lister(std::move(lister))
{}

void ServerModelsViewModel::fetch()
{
    m_isFetching = true;
    m_problem.clear();
    Q_EMIT changed();
    m_fetch = TaskHandle::start(
        [this](std::stop_token stop) { return fetchNames(QPointer(this), std::move(stop)); });
}

QCoro::Task<> ServerModelsViewModel::fetchNames(QPointer<ServerModelsViewModel> self, std::stop_token stop)
{
    QStringList names;
    QString problem;
    try {
        names = co_await self->m_lister(stop);
        if (names.isEmpty())
            problem = u"The server lists no models."_s;
    } catch (...) {
        problem = presentationOf(std::current_exception()).message;
    }
    if (self && !stop.stop_requested())
        self->finish(names, problem);
}

void ServerModelsViewModel::finish(const QStringList &names, const QString &problem)
{
    m_isFetching = false;
    m_names = names;
    m_problem = problem;
    find();
    Q_EMIT changed();
}

void ServerModelsViewModel::setFilter(const QString &filter)
{
    if (m_filter == filter)
        return;
    m_filter = filter;
    find();
    Q_EMIT filterChanged();
}

QString ServerModelsViewModel::nameAt(int row) const
{
    return m_found.data(m_found.index(row)).toString();
}

int ServerModelsViewModel::rowOf(const QString &name) const
{
    return static_cast<int>(m_found.stringList().indexOf(name));
}

void ServerModelsViewModel::find()
{
    QStringList found = m_names;
    const QStringList words = m_filter.simplified().split(u' ', Qt::SkipEmptyParts);
    for (const QString &word : words)
        found = found.filter(word, Qt::CaseInsensitive);
    if (found != m_found.stringList())
        m_found.setStringList(found);
}

void ServerModelsViewModel::forget()
{
    m_fetch = {};
    finish({}, {});
}

} // namespace morvane
