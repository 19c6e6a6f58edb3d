#include "models/Record.h"

#include "models/RecordContext.h"
#include "security/SealedForm.h"

namespace morvane {

Record::Record(RecordKind kind, const QUuid &id, std::shared_ptr<const FieldSealing> sealing)
    : m_kind(kind)
    , m_id(id)
    , m_sealing(std::move(sealing))
{}

Record::~Record()
{
    if (m_context)
        m_context->recordReleased(*this);
}

std::optional<QString> Record::opened(const std::optional<QString> &sealed) const
{
    if (!sealed)
        return std::nullopt;
    return m_sealing->open(*sealed);
}

void Record::assignSealed(QString &field, const QString &text)
{
    if (auto sealed = m_sealing->seal(text))
        assign(field, *std::move(sealed));
}

void Record::assignSealed(std::optional<QString> &field, const std::optional<QString> &text)
{
    if (!text)
        assign(field, std::optional<QString>());
    else if (auto sealed = m_sealing->seal(*text))
        assign(field, std::move(sealed));
}

void Record::sealIfPlain(QString &field)
{
    if (!field.isEmpty() && !SealedForm::isSealedField(field))
        assignSealed(field, QString(field));
}

void Record::sealIfPlain(std::optional<QString> &field)
{
    if (field)
        sealIfPlain(*field);
}

QString Record::sealedAtCreation(const FieldSealing &sealing, const QString &text)
{
    return sealing.seal(text).value_or(QString());
}

std::optional<QString> Record::sealedAtCreation(const FieldSealing &sealing,
                                                const std::optional<QString> &text)
{
    if (!text)
        return std::nullopt;
    return sealedAtCreation(sealing, *text);
}

void Record::changed()
{
    ++m_revision;
    if (m_context)
        m_context->recordChanged(*this);
}

} // namespace morvane
