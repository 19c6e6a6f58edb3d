#pragma once

#include "Options.h"

#include "attestation/evidence/VeniceSignedMeasurementList.h"

namespace morvane {

// The bytes of a file as they are to be judged. Whatever is wrong with the file itself says nothing about
// evidence: it is a UsageError.
namespace InputFile {

// Of at most 64 MiB, and never empty. "-" is standard input.
[[nodiscard]] QByteArray contents(const QString &path);

// The same for a file that must hold JSON text.
[[nodiscard]] QByteArray json(const QString &path);

// A list of accepted servers, whose signature isn't checked.
[[nodiscard]] VeniceSignedMeasurementList acceptedList(const QString &path);

// The quote's bytes out of the encoding that was named.
[[nodiscard]] QByteArray quote(const Options &options);

} // namespace InputFile

} // namespace morvane
