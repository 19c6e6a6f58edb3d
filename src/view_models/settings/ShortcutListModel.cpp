#include "view_models/settings/ShortcutListModel.h"

#include "async/CancelledError.h"
#include "utils/files/PrivateFile.h"

#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

ShortcutListModel::ShortcutListModel(Ports ports, QString folder, QObject *parent)
    : QAbstractListModel(parent)
    , m_ports(ports)
    , m_folder(std::move(folder))
{}

QString ShortcutListModel::example()
{
    return u"#!/bin/sh\n"
           "# Says how many words a text has.\n"
           "[ \"$1\" = --input-path ] && wc -w < \"$2\""_s;
}

int ShortcutListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QHash<int, QByteArray> ShortcutListModel::roleNames() const
{
    return {{NameRole, "name"}, {CommentRole, "comment"}, {RefusedRole, "refused"}};
}

QVariant ShortcutListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto &shortcut = m_shortcuts[static_cast<std::size_t>(index.row())];
    switch (role) {
    case NameRole:
        return shortcut.name;
    case CommentRole:
        if (shortcut.refusal) {
            const DesktopActionError refusal(*shortcut.refusal);
            return QString(refusal.userMessage() + u' ' + refusal.recoverySuggestion().value_or(QString()));
        }
        return shortcut.comment;
    case RefusedRole:
        return shortcut.refusal.has_value();
    default:
        return {};
    }
}

void ShortcutListModel::refresh()
{
    if (isAvailable())
        m_looking =
            TaskHandle::start([this](std::stop_token stop) { return look(QPointer(this), std::move(stop)); });
}

void ShortcutListModel::openFolder()
{
    if (isAvailable())
        m_opening =
            TaskHandle::start([this](std::stop_token stop) { return open(QPointer(this), std::move(stop)); });
}

QCoro::Task<> ShortcutListModel::look(QPointer<ShortcutListModel> self, std::stop_token stop)
{
    std::optional<std::vector<ShortcutRunning::Shortcut>> found;
    QString message;
    try {
        found = co_await self->m_ports.shortcuts->list(stop);
        if (!found)
            message = u"The folder can't be read at the moment."_s;
    } catch (const DesktopActionError &) {
        found.reset(); // there is no folder yet
    } catch (const CancelledError &) {
        co_return;
    }
    if (self && !stop.stop_requested())
        self->take(found.value_or(std::vector<ShortcutRunning::Shortcut>()), message);
}

QCoro::Task<> ShortcutListModel::open(QPointer<ShortcutListModel> self, std::stop_token stop)
{
    auto outcome = LinkOpening::Outcome::failed;
    try {
        PrivateFile::createFolder(self->m_folder);
        outcome = co_await self->m_ports.links->open(QUrl::fromLocalFile(self->m_folder), stop);
    } catch (const FileError &) {
        outcome = LinkOpening::Outcome::failed;
    } catch (const CancelledError &) {
        co_return;
    }
    if (!self || stop.stop_requested())
        co_return;
    self->m_message = outcome == LinkOpening::Outcome::failed
                          ? u"Nothing here would open the folder. It is at the place above."_s
                          : QString();
    Q_EMIT self->changed();
}

void ShortcutListModel::take(std::vector<ShortcutRunning::Shortcut> shortcuts, const QString &message)
{
    m_message = message;
    if (m_shortcuts != shortcuts) {
        beginResetModel();
        m_shortcuts = std::move(shortcuts);
        endResetModel();
    }
    Q_EMIT changed();
}

} // namespace morvane
