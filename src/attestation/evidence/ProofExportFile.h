#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <exception>
#include <optional>
#include <variant>
#include <vector>

namespace morvane {

// A file that the proof ledger was exported to, read back strictly: what this program doesn't write, it
// doesn't read. Reading judges nothing; ExportedProof does.
struct ProofExportFile {
    struct Proof {
        QString stack;
        bool verifiedThisTurn = false;
        QByteArray nonce; // 32 bytes
        QByteArray mrtd;  // 48 bytes
        QByteArray rtmr3; // 48 bytes
        std::optional<QString> teeProvider;
        std::optional<QByteArray> composeHash; // 32 bytes
        QByteArray quote;
        QByteArray signingAddress; // 20 bytes
        QByteArray modelPublicKey; // 65 bytes
        std::int64_t gpuCount = 0; // never negative
        bool requiresGPUEvidence = false;
        bool serverClaimedVerified = false;
        std::optional<QString> acceptedServersList;
    };

    struct Turn {
        QDateTime ranAt; // UTC
        QString where;
        QString model;
        QString purpose;
        QString yourData;
        QString result;
        std::optional<QString> host;
        std::optional<QString> notice;
        std::optional<Proof> proof;

        // Exactly the members that a row has, and bytes in lower-case hexadecimal. Throws ReadError.
        [[nodiscard]] static Turn read(const QJsonObject &row);
    };

    class ReadError final : public std::exception {
    public:
        struct UnknownField {
            QString field; // in a proof: "proof.note"
            bool operator==(const UnknownField &) const = default;
        };
        struct MissingField {
            QString field;
            bool operator==(const MissingField &) const = default;
        };
        struct BadValue {
            QString field;
            bool operator==(const BadValue &) const = default;
        };
        // A name stands twice in one object, so that two readers may see different values.
        enum class Plain { tooLarge, notJSON, repeatedField };
        using Case = std::variant<UnknownField, MissingField, BadValue, Plain>;

        ReadError(Case reason)
            : m_case(std::move(reason))
        {}

        [[nodiscard]] const Case &reason() const { return m_case; }
        [[nodiscard]] QString caseText() const;

    private:
        Case m_case;
    };

    static constexpr qsizetype sizeLimit = qsizetype{64} * 1024 * 1024; // bytes
    static constexpr std::size_t turnLimit = 200;                       // what the ledger keeps

    // Whether the rows are those that were exported, by what the file says of itself. Nothing signs it: it
    // shows damage and careless changes, not forgery.
    enum class Rows { asExported, changed, unstated };

    QDateTime exported;
    std::vector<QJsonObject> turns; // for Turn::read one by one, so that a bad row leaves the others readable
    Rows rows = Rows::unstated;

    // What the file says of itself, to stand in "howToCheck": the SHA-256 of its rows as compact JSON with
    // sorted names, which any tool can work out.
    [[nodiscard]] static QString statement(const QJsonArray &turns);

    // Throws ReadError.
    [[nodiscard]] static ProofExportFile read(QByteArrayView json);
};

} // namespace morvane
