#pragma once

#include <QColor>

/// The colours of the block map and its legends.
namespace BlockColours {

/// Not verified by the current scan.
QColor unverified();
/// Verified, no failed read inside.
QColor verified();
/// A failed read lies wholly inside.
QColor bad();
/// The block being verified.
QColor current();
/// A verified block of read-time class \a latencyClass (0 fastest): green through yellow and
/// orange to purple, so that none is taken for the red of a bad block.
QColor latency(int latencyClass);

} // namespace BlockColours
