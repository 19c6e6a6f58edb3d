#pragma once

#include "attestation/evidence/EvidencePins.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>

namespace morvane {

// A command line that can't be carried out, or a file that can't be read: nothing was checked.
class UsageError final : public std::runtime_error {
public:
    explicit UsageError(const QString &message)
        : std::runtime_error(message.toStdString())
    {}

    [[nodiscard]] QString message() const { return QString::fromUtf8(what()); }
};

// What the command line asks for.
struct Options {
    enum class Command { Help, Version, Quote, GPU, Replay, Document, Export };
    enum class Encoding { Raw, Hex, Base64 };
    enum class Output { Text, Json };

    Command command = Command::Help;
    QString file; // "-" for standard input
    Encoding encoding = Encoding::Raw;
    Output output = Output::Text;
    QDateTime date;                        // UTC; an export's rows have their own
    QByteArray nonce;                      // 32 bytes
    std::optional<QByteArray> composeHash; // 32 bytes
    std::optional<QByteArray> instanceID;  // 20 bytes
    std::optional<QByteArray> rtmr3;       // 48 bytes
    QString model;
    QString acceptedList; // a file; empty for the built-in one
    EvidencePins pins;
    QStringList replacedPins; // names of those that aren't this build's own

    // Throws UsageError.
    [[nodiscard]] static Options parse(const QStringList &arguments);

    // What the command line asks for as far as it can be told of one that parse() refuses.
    [[nodiscard]] static Output outputOf(const QStringList &arguments);
};

} // namespace morvane
