#pragma once

#include <map>

#include "platform/kiv/Attribute.h"
#include "platform/kiv/Entity.h"
#include "platform/zornet/Pkt.h"

namespace Zornet {

/// A packet access object: gives received frames and takes frames to send. Each frame that arrives raises
/// `readableCount` by one, and that change is the signal to read one frame; the count never falls. This base
/// never receives and has nowhere to send to: a derived class overrides doGetRxPkt() and txPktIs().
class Pam : public Kiv::Entity {
  public:
    class NotifieeConst;
    class Notifiee;
    using SavedPackets = std::map<U16, Kiv::Ptr<Pkt>>;
    using SavedPacketsRx = std::map<U16, bool>;

    static constexpr Kiv::AttributeId attrReadableCount = 258;
    static constexpr Kiv::AttributeId attrWritableCount = 259;
    static constexpr Kiv::AttributeId attrRxPkt = 260;
    static constexpr Kiv::AttributeId attrTxPkt = 261;
    static constexpr Kiv::AttributeId attrTxDrops = 262;
    static constexpr Kiv::AttributeId attrTxErrors = 263;
    static constexpr Kiv::AttributeId attrRxErrors = 264;
    static constexpr Kiv::AttributeId attrRxPktHolder = 265;
    static constexpr Kiv::AttributeId attrDoGetRxPkt = 266;
    static constexpr Kiv::AttributeId attrSavedPacket = 267;
    static constexpr Kiv::AttributeId attrSavedPacketRx = 268;
    /// The first attribute of a derived class.
    static constexpr Kiv::AttributeId attrDerived = 386;

    explicit Pam( Kiv::Name const& name );
    ~Pam() override;

    static std::span<Kiv::Attribute const> attributes();
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    /// The next received frame, or null when none is there. Runs doGetRxPkt() for it.
    Kiv::Ptr<Pkt> rxPkt();
    /// Hands the next received frame to rxPktHolderIs(), or leaves that alone where there is none.
    virtual void doGetRxPkt() {}
    /// Sets what the running rxPkt() will return.
    virtual void rxPktHolderIs( Kiv::Ptr<Pkt> const& pkt ) { rxPktHolder_ = pkt; }
    /// Sends the whole frame, wherever its window stands. The caller may change the packet as soon as this
    /// returns. Failure shows in `txDrops` and `txErrors` only.
    virtual void txPktIs( Kiv::Ptr<Pkt> const& pkt );

    /// Frames that have arrived since the start.
    U32 readableCount() const { return readableCount_; }
    virtual void readableCountIs( U32 count );
    virtual void readableCountInc( U32 n ) { readableCountIs( readableCount_ + n ); }

    /// Frames that can be taken for sending.
    U32 writableCount() const { return writableCount_; }
    virtual void writableCountIs( U32 count );
    virtual void writableCountInc( U32 n ) { writableCountIs( writableCount_ + n ); }

    /// Frames that were dropped unsent.
    U32 txDrops() const { return txDrops_; }
    virtual void txDropsIs( U32 count );
    virtual void txDropsInc( U32 n ) { txDropsIs( txDrops_ + n ); }

    U32 txErrors() const { return txErrors_; }
    virtual void txErrorsIs( U32 count );
    virtual void txErrorsInc( U32 n ) { txErrorsIs( txErrors_ + n ); }

    /// Errors on receive, and frames that were lost because nobody read them in time.
    U32 rxErrors() const { return rxErrors_; }
    virtual void rxErrorsIs( U32 count );
    virtual void rxErrorsInc( U32 n ) { rxErrorsIs( rxErrors_ + n ); }

    /// Packets held back by the access object, by number; null where there is none.
    Kiv::Ptr<Pkt> savedPacket( U16 index ) const;
    SavedPackets const& savedPackets() const { return savedPackets_; }
    virtual void savedPacketIs( U16 index, Kiv::Ptr<Pkt> const& pkt );
    virtual void savedPacketDel( U16 index );
    virtual void savedPacketDel( SavedPackets::const_iterator at ) { savedPacketDel( at->first ); }
    virtual void savedPacketNotify( U16 index );

    /// Direction of the saved packet of that number: true for a received one; false where there is none.
    bool savedPacketRx( U16 index ) const;
    SavedPacketsRx const& savedPacketsRx() const { return savedPacketsRx_; }
    virtual void savedPacketRxIs( U16 index, bool rx );
    virtual void savedPacketRxDel( U16 index );
    virtual void savedPacketRxDel( SavedPacketsRx::const_iterator at ) { savedPacketRxDel( at->first ); }
    virtual void savedPacketRxNotify( U16 index );

  protected:
    /// Body of the mutator of an attribute that only a derived class has.
    template <class T>
    void attributeIs( Kiv::AttributeId id, T& stored, T const& value ) {
        if ( stored != value ) {
            stored = value;
            tellOf( id );
        }
    }
    /// Counts a change of such an attribute and tells of it. Reactors on any access object stand in the same
    /// list, so it comes to all of them through onAttribute().
    void tellOf( Kiv::AttributeId id );

  private:
    U32 readableCount_ = 0;
    U32 writableCount_ = 0;
    U32 txDrops_ = 0;
    U32 txErrors_ = 0;
    U32 rxErrors_ = 0;
    SavedPackets savedPackets_;
    SavedPacketsRx savedPacketsRx_;
    Kiv::Ptr<Pkt> rxPktHolder_; ///< set within rxPkt() only
};

/// Base of the reactors on a packet access object.
class Pam::NotifieeConst : public Kiv::Entity::NotifieeConst {
  public:
    Pam const* notifier() const { return static_cast<Pam const*>( notifierEntity() ); }

    virtual void onReadableCount() {}
    virtual void onWritableCount() {}
    virtual void onTxDrops() {}
    virtual void onTxErrors() {}
    virtual void onRxErrors() {}
    virtual void onSavedPacket( U16 ) {}
    virtual void onSavedPacketkivImmediate() {}
    virtual void onSavedPacket() {}
    virtual void onSavedPacketRx( U16 ) {}
    virtual void onSavedPacketRxkivImmediate() {}
    virtual void onSavedPacketRx() {}

  protected:
    explicit NotifieeConst( Kiv::Ptr<Pam const> const& pam ) : Kiv::Entity::NotifieeConst( pam ) {}
};

/// The same for a reactor that may change the object.
class Pam::Notifiee : public Pam::NotifieeConst {
  public:
    Pam* notifier() const { return const_cast<Pam*>( NotifieeConst::notifier() ); }

  protected:
    explicit Notifiee( Kiv::Ptr<Pam> const& pam ) : NotifieeConst( pam ) {}
};

} // namespace Zornet
