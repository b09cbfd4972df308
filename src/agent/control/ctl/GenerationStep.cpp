#include "agent/control/ctl/GenerationStep.h"

#include <random>

namespace Agent {

Kiv::U32
generationStep() {
    static Kiv::U32 const step = [] {
        std::random_device device;
        return std::uniform_int_distribution<Kiv::U32>( 2, 1U << 24 )( device );
    }();
    return step;
}

} // namespace Agent
