#include "view_models/settings/PrivacyViewModel.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "persistence/LocalDataEraser.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QPointer>

namespace morvane {

using namespace Qt::StringLiterals;

PrivacyViewModel::PrivacyViewModel(const SupportFolders &folders, std::function<void()> replaceIdentifiers,
                                   Work &work, QObject *parent)
    : QObject(parent)
    , m_places{u"Chats, notes and instructions"_s,
               u"Sealed, in %1 and %2"_s.arg(
                   QDir::toNativeSeparators(folders.data + u'/' + Product::storeFolder),
                   Product::serviceName),
               u"Settings"_s,
               u"Readable, without a word of a chat, in %1"_s.arg(QDir::toNativeSeparators(folders.config)),
               u"Reports of crashes"_s,
               u"Where in the program, without a word of yours, in %1"_s.arg(
                   QDir::toNativeSeparators(folders.state + u'/' + Product::serviceName)),
               u"The window's place and which chat was open"_s,
               u"Readable, the chat as a number, in %1"_s.arg(
                   QDir::toNativeSeparators(folders.state + u'/' + Product::serviceName)),
               u"Models on this %1"_s.arg(DesktopWords::here().device),
               u"As they were downloaded; nothing about you is in them"_s}
    , m_replaceIdentifiers(std::move(replaceIdentifiers))
    , m_work(work)
{}

QString PrivacyViewModel::keyPlace()
{
    return u"In your %1."_s.arg(DesktopWords::here().secretStore);
}

QString PrivacyViewModel::identifiersNote() const
{
    return m_hasReplaced ? Product::name + u" looks like a new install to every service."_s : QString();
}

QString PrivacyViewModel::shortLimits()
{
    return LocalDataEraser::shortLimits();
}

QStringList PrivacyViewModel::limits()
{
    return LocalDataEraser::limits();
}

QString PrivacyViewModel::confirmation()
{
    return u"delete"_s;
}

bool PrivacyViewModel::isConfirmation(const QString &typed) const
{
    return typed.trimmed().compare(confirmation(), Qt::CaseInsensitive) == 0;
}

void PrivacyViewModel::eraseAll(const QString &typed)
{
    if (isConfirmation(typed))
        Q_EMIT erasureConfirmed();
}

void PrivacyViewModel::replaceIdentifiers()
{
    replace();
}

QCoro::Task<> PrivacyViewModel::replace()
{
    const QPointer self(this);
    const auto replaceThem = m_replaceIdentifiers;
    try {
        co_await m_work.run(replaceThem);
    } catch (const CancelledError &) {
        co_return;
    }
    if (!self)
        co_return;
    m_hasReplaced = true;
    Q_EMIT identifiersReplaced();
}

} // namespace morvane
