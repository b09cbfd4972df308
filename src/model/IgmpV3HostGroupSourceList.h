#pragma once

#include "model/Types.h"
#include "platform/kiv/Attribute.h"
#include "platform/kiv/Entity.h"
#include "platform/zornet/IpAddr.h"

namespace Igmp {

/// A set of sources with a small number for each. In a record that states a wanted set the number is 1 and
/// only presence counts; in a list of changes it is the number of reports that still have to name the source.
class IgmpV3HostGroupSourceList : public Kiv::Entity {
  public:
    enum : AttributeId { attrSourceIp = 258 };

    /// One source and its number.
    class KivSourceIp : public Kiv::PtrInterface, public Kiv::HashMember {
      public:
        KivSourceIp( Zornet::IpAddr const& source, U8 number ) : key( source ), value( number ) {}
        Zornet::IpAddr const& fwkKey() const { return key; }

        Zornet::IpAddr const key;
        U8 value;
    };
    using SourceIps = Kiv::HashMap<KivSourceIp, Zornet::IpAddr>;

    class NotifieeConst : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onSourceIp( Zornet::IpAddr ) {}
        virtual void onSourceIpkivImmediate() {}
        virtual void onSourceIp() {}

      protected:
        explicit NotifieeConst( Ptr<IgmpV3HostGroupSourceList const> const& list );
    };
    class Notifiee : public NotifieeConst {
      protected:
        explicit Notifiee( Ptr<IgmpV3HostGroupSourceList> const& list );
    };

    IgmpV3HostGroupSourceList() : Entity( Kiv::Name() ) {}

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3HostGroupSourceList>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    SourceIps const& sourceIp() const { return sourceIp_; }
    /// The source's number; 0 for one that is absent.
    U8 sourceIp( Zornet::IpAddr const& source ) const;
    bool hasSourceIp( Zornet::IpAddr const& source ) const { return sourceIp_.find( source ) != nullptr; }
    std::size_t sourceIps() const { return sourceIp_.size(); }

    Ptr<KivSourceIp> newSourceIp( Zornet::IpAddr const& source, U8 number );
    void sourceIpIs( Zornet::IpAddr const& source, U8 number );
    /// Both create an absent source with 0 first and wrap at 256. They return the new number.
    U8 sourceIpInc( Zornet::IpAddr const& source, U8 by );
    U8 sourceIpDec( Zornet::IpAddr const& source, U8 by );
    void sourceIpDel( Zornet::IpAddr const& source );
    void sourceIpDel( SourceIps::Iterator const& at ) { sourceIpDel( at->key ); }
    void sourceIpDelAll();
    void sourceIpNotify( Zornet::IpAddr const& source );

  private:
    SourceIps sourceIp_;
};

Ptr<IgmpV3HostGroupSourceList> igmpV3HostGroupSourceListFactory();

/// Takes one off every number of a list of changes; a source whose number was 1 leaves the list. A number of
/// 0 is a broken invariant.
void decrementAllCounter( Ptr<IgmpV3HostGroupSourceList> const& list );

} // namespace Igmp
