#pragma once

#include "attestation/evidence/VeniceMeasurementAllowlist.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <exception>
#include <functional>
#include <optional>
#include <set>
#include <variant>
#include <vector>

namespace morvane {

// A list of accepted servers as it travels: read whole or not at all.
struct VeniceSignedMeasurementList {
    struct Entry {
        QString id;
        QString model;
        VeniceMeasurementAllowlist::Stack stack; // with one configuration, and GPU evidence always required

        bool operator==(const Entry &) const = default;
    };

    class Refusal final : public std::exception {
    public:
        struct UnknownField {
            QString field; // where, a dot, the key: "entry.note"
            bool operator==(const UnknownField &) const = default;
        };
        struct MissingField {
            QString field;
            bool operator==(const MissingField &) const = default;
        };
        struct BadValue {
            QString key;
            bool operator==(const BadValue &) const = default;
        };
        struct DuplicateID {
            QString id;
            bool operator==(const DuplicateID &) const = default;
        };
        struct RolledBack {
            std::int64_t offered;
            std::int64_t floor;
            bool operator==(const RolledBack &) const = default;
        };
        struct SameVersionDifferentList {
            std::int64_t version;
            bool operator==(const SameVersionDifferentList &) const = default;
        };
        enum class Plain { tooLarge, signatureMalformed, signatureInvalid, notJSON, unknownFormat, expired };
        using Case = std::variant<UnknownField, MissingField, BadValue, DuplicateID, RolledBack,
                                  SameVersionDifferentList, Plain>;

        Refusal(Case reason)
            : m_case(std::move(reason))
        {}

        [[nodiscard]] const Case &reason() const { return m_case; }
        [[nodiscard]] QString caseText() const;
        bool operator==(const Refusal &other) const { return m_case == other.m_case; }

    private:
        Case m_case;
    };

    static constexpr qsizetype sizeLimit = 524288; // bytes

    std::int64_t listVersion = 0;
    QDateTime issuedAt;
    QDateTime notAfter;
    std::vector<Entry> entries;
    std::set<QString> revoked;

    // The list in a file's bytes, whose signature is the caller's affair. `floor` is the lowest version that
    // may still be offered. Throws Refusal.
    [[nodiscard]] static VeniceSignedMeasurementList read(QByteArrayView json, std::int64_t floor);

    // A list whose signature held, and the key that it held under (32 bytes).
    struct Signed;

    // The list in a file's bytes, read only once its signature holds under one of `publicKeys`. `floorOf`
    // gives the lowest version that may still be offered under a key; with a date, a list that has run out by
    // then is expired. Throws Refusal.
    [[nodiscard]] static Signed verify(QByteArrayView list, QByteArrayView signature,
                                       const std::vector<QByteArray> &publicKeys,
                                       const std::function<std::int64_t(const QByteArray &key)> &floorOf,
                                       const std::optional<QDateTime> &date = std::nullopt);

    // Between 1 and 96 of a-z, 0-9, "-" and ".", the first a letter or a digit.
    [[nodiscard]] static bool isIdentifier(QStringView text);

    // What the list accepts at `date`, its own withdrawals applied. Once it has run out the `bundled` stacks
    // stand in for its entries.
    [[nodiscard]] VeniceMeasurementAllowlist allowlistAt(const QDateTime &date,
                                                         const VeniceMeasurementAllowlist &bundled) const;
};

struct VeniceSignedMeasurementList::Signed {
    VeniceSignedMeasurementList list;
    QByteArray key;
};

} // namespace morvane
