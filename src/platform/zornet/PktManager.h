#pragma once

#include <span>

#include "platform/zornet/Pkt.h"

namespace Zornet {

/// Makes packets, and keeps some of those that are done with, buffer and all, so that a steady stream of
/// packets costs no allocation. A packet in use holds its manager.
class PktManager : public Kiv::PtrInterface {
  public:
    ~PktManager() override;

    /// A packet with an empty shared buffer, or null where none is to be had. This manager always has one.
    virtual Kiv::Ptr<Pkt> newPkt();

    /// How many packets may wait for reuse. Never a limit of the packets in use.
    U32 pktLimit() const { return pktLimit_; }
    void pktLimitIs( U32 limit );
    /// How many packets wait for reuse: at most `pktLimit()`.
    U32 freePkts() const { return freePkts_; }

  private:
    friend class Pkt;

    void freePktIs( Pkt* pkt );
    Pkt* takeFreePkt();

    U32 pktLimit_ = 1024;
    U32 freePkts_ = 0;
    Pkt* firstFree_ = nullptr;
};

/// The manager of the whole process.
Kiv::Ptr<Pkt::Manager> globalPktManager();
/// Puts another manager in its place. Raises "null ValidPtr" for a null one.
void globalPktManagerIs( Kiv::Ptr<Pkt::Manager> const& manager );

/// A packet of the process's manager that holds a copy of `frame`, with `headRoom` bytes in front of
/// it that tags can take without moving the frame. Null where the manager gives none.
Kiv::Ptr<Pkt> pktWithBytes( std::span<U8 const> frame, U32 headRoom = 8 );

} // namespace Zornet
