#include "view_models/chat/SourceMenuViewModel.h"

#include "ai/routing/AIRequestRouter.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString glyphOf(ChatSource::Kind kind)
{
    switch (kind) {
    case ChatSource::Kind::morvaneCloud:
        return u"sealed"_s;
    case ChatSource::Kind::thisMac:
        return u"computer"_s;
    case ChatSource::Kind::network:
        return u"network"_s;
    case ChatSource::Kind::customCloud:
    case ChatSource::Kind::ollamaCloud:
        return u"globe"_s;
    case ChatSource::Kind::notConfigured:
        return u"warning"_s;
    }
    return {};
}

} // namespace

SourceMenuViewModel::SourceMenuViewModel(AIRequestRouter &router, QObject *parent)
    : QAbstractListModel(parent)
    , m_router(router)
    , m_options(router.sources())
{
    connect(&router, &AIRequestRouter::sourceChanged, this, &SourceMenuViewModel::refresh);
}

void SourceMenuViewModel::refresh()
{
    std::vector<SourceOption> options = m_router.sources();
    if (options != m_options) {
        beginResetModel();
        m_options = std::move(options);
        endResetModel();
    }
    Q_EMIT sourceChanged();
}

// Of a place at which nobody answers yet, nothing is said.
QString SourceMenuViewModel::name() const
{
    return m_router.isConfigured() ? m_router.sourceLabel() : ChatSource().label();
}

QString SourceMenuViewModel::destination() const
{
    return m_router.isConfigured() ? m_router.chatSource().destination() : u"Goes nowhere yet"_s;
}

QString SourceMenuViewModel::glyph() const
{
    return glyphOf(m_router.isConfigured() ? m_router.chatSource().kind : ChatSource::Kind::notConfigured);
}

QString SourceMenuViewModel::warning() const
{
    const auto notice = m_router.privacyNotice();
    if (!notice || !m_router.isConfigured())
        return {};
    switch (notice->kind) {
    case PrivacyNotice::Kind::notPrivate:
        return u"%1 can read what you send."_s.arg(notice->host);
    case PrivacyNotice::Kind::unencryptedOnNetwork:
        return u"What you send to %1 is not encrypted. Others on your network could read it."_s.arg(
            notice->host);
    }
    return {};
}

QString SourceMenuViewModel::cloudNotice() const
{
    return m_router.privateCloudNotice().value_or(QString());
}

int SourceMenuViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_options.size());
}

QHash<int, QByteArray> SourceMenuViewModel::roleNames() const
{
    return {{NameRole, "name"},
            {DestinationRole, "destination"},
            {GlyphRole, "glyph"},
            {ProblemRole, "problem"},
            {InUseRole, "inUse"}};
}

QVariant SourceMenuViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const SourceOption &option = m_options[static_cast<std::size_t>(index.row())];
    switch (role) {
    case NameRole:
        return option.name;
    case DestinationRole:
        return option.destination;
    case GlyphRole:
        return glyphOf(option.source.kind);
    case ProblemRole:
        return option.problem.value_or(QString());
    case InUseRole:
        return option.isInUse;
    default:
        return {};
    }
}

void SourceMenuViewModel::choose(int row)
{
    if (row < 0 || row >= rowCount())
        return;
    const SourceOption &option = m_options[static_cast<std::size_t>(row)];
    if (!option.problem)
        m_router.choose(option.choice);
}

} // namespace morvane
