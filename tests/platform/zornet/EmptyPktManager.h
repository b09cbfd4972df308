#pragma once

#include "platform/zornet/PktManager.h"

namespace Zornet {

/// A manager that has no packet to give.
class EmptyPktManager : public PktManager {
  public:
    Kiv::Ptr<Pkt> newPkt() override { return nullptr; }
};

} // namespace Zornet
