#pragma once

#include "Report.h"

#include "attestation/evidence/VeniceAttestationVerifier.h"

namespace morvane {

// What evidence says of itself, as fields of a report. Nothing in it is checked.
namespace Description {

void add(Report &report, const TDXQuote &quote);
void add(Report &report, const NvidiaGPUEvidence &evidence);
void add(Report &report, const VeniceAttestationDocument &document);

// What the checks of a document have found so far.
void add(Report &report, const VeniceAttestationVerifier::Inquiry &inquiry);

// A warning for each pair of entries that show the same certificate, and for each that isn't a graphics
// chip's: both count as devices, so a reader must know.
void addWarnings(Report &report, const NvidiaGPUEvidence &evidence);

} // namespace Description

} // namespace morvane
