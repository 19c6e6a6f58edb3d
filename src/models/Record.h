#pragma once

#include "security/FieldSealing.h"

#include <QString>
#include <QUuid>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace morvane {

class RecordContext;

enum class RecordKind { Conversation, ChatMessage, ImportedDocument };

// A stored record with an identity: two records are the same when they are the same object. It lives as long
// as someone holds it; a context hands out one object for one row. A record that was removed, or whose
// context has gone, stays safe to read and to write, and no longer reaches a store.
//
// Main thread only.
class Record : public std::enable_shared_from_this<Record> {
public:
    virtual ~Record();
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;

    [[nodiscard]] RecordKind kind() const { return m_kind; }
    [[nodiscard]] const QUuid &id() const { return m_id; }

    // Grows with each change of a field. A view that caches opened text compares it.
    [[nodiscard]] std::uint64_t revision() const { return m_revision; }

    // For the context only.
    void attach(RecordContext &context) { m_context = &context; }
    void detach() { m_context = nullptr; }
    [[nodiscard]] RecordContext *context() const { return m_context; }

protected:
    Record(RecordKind kind, const QUuid &id, std::shared_ptr<const FieldSealing> sealing);

    template <typename T>
    void assign(T &field, T value)
    {
        if (field == value)
            return;
        field = std::move(value);
        changed();
    }

    [[nodiscard]] QString opened(const QString &sealed) const { return m_sealing->open(sealed); }
    [[nodiscard]] std::optional<QString> opened(const std::optional<QString> &sealed) const;

    // The field keeps its former value when the text cannot be sealed.
    void assignSealed(QString &field, const QString &text);
    void assignSealed(std::optional<QString> &field, const std::optional<QString> &text);

    // A text from before sealing becomes sealed when it can be.
    void sealIfPlain(QString &field);
    void sealIfPlain(std::optional<QString> &field);

    // At creation there is no former value: a text that cannot be sealed is lost, never stored as it is.
    [[nodiscard]] static QString sealedAtCreation(const FieldSealing &sealing, const QString &text);
    [[nodiscard]] static std::optional<QString> sealedAtCreation(const FieldSealing &sealing,
                                                                 const std::optional<QString> &text);

private:
    void changed();

    RecordKind m_kind;
    QUuid m_id;
    std::shared_ptr<const FieldSealing> m_sealing;
    RecordContext *m_context = nullptr;
    std::uint64_t m_revision = 0;
};

} // namespace morvane
