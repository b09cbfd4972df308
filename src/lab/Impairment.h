#pragma once

#include "platform/zornet/Types.h"

namespace Lab {

/// What a segment does to the frames that cross it. By default nothing: each arrives once, in order, with the
/// next turn.
struct Impairment {
    /// Probabilities of 0 to 1, for each frame: it reaches nobody, it arrives twice, it is held back.
    double loss = 0.0;
    double duplication = 0.0;
    double reordering = 0.0;
    /// Seconds from sending to arrival, and up to how much more there may be. Frames do not overtake each
    /// other by jitter.
    Kiv::Seconds delay = 0.0;
    Kiv::Seconds jitter = 0.0;
    /// Seconds for which a frame that is held back lets later ones overtake it.
    Kiv::Seconds reorderingDelay = 1e-3;

    /// Raises RangeException for a value outside its range.
    void check() const;
};

} // namespace Lab
