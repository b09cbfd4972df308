#pragma once

#include "model/IgmpV3HostGroupSourceList.h"
#include "platform/zornet/IgmpV3GroupRecordType.h"

namespace Igmp {

/// What a host wants of one multicast group: a filter mode (1 include, 2 exclude) and a set of sources. A
/// writer changes both as needed and then moves `version`; only that move is acted on.
class IgmpV3GroupRecord : public Kiv::Entity, public Kiv::HashMember {
  public:
    enum : AttributeId {
        attrMulticastAddr = 258,
        attrFilterMode,
        attrSource,
        attrVersion,
        attrReplicate,
        attrReplicateNumber,
        attrReplicateGroup,
    };
    using FilterMode = Zornet::IgmpV3GroupRecordType;
    static constexpr FilterMode include = FilterMode::MODE_IS_INCLUDE;
    static constexpr FilterMode exclude = FilterMode::MODE_IS_EXCLUDE;

    /// onVersion() is the entity-wide callback of the runtime; one override serves both.
    class NotifieeConst : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onFilterMode() {}
        virtual void onSource() {}
        virtual void onReplicate() {}
        virtual void onReplicateNumber() {}
        virtual void onReplicateGroup() {}

      protected:
        explicit NotifieeConst( Ptr<IgmpV3GroupRecord const> const& record );
    };
    class Notifiee : public NotifieeConst {
      public:
        IgmpV3GroupRecord* notifier() const;

      protected:
        explicit Notifiee( Ptr<IgmpV3GroupRecord> const& record );
    };

    IgmpV3GroupRecord( Kiv::Name const& name, Zornet::IpAddr const& multicastAddr )
        : Entity( name ), multicastAddr_( multicastAddr ) {}
    ~IgmpV3GroupRecord() override { orphanSource(); }

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3GroupRecord>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Zornet::IpAddr const& fwkKey() const { return multicastAddr_; }
    Zornet::IpAddr const& multicastAddr() const { return multicastAddr_; }

    /// Any byte is taken; one other than 1 and 2 ends the process when a change of it is reported.
    FilterMode filterMode() const { return filterMode_; }
    void filterModeIs( FilterMode v ) {
        scalarIs( attrFilterMode, filterMode_, v, &NotifieeConst::onFilterMode );
    }

    /// The set of sources, or null.
    Ptr<IgmpV3HostGroupSourceList> const& source() const { return source_; }
    Ptr<IgmpV3HostGroupSourceList> sourceIs();
    Ptr<IgmpV3HostGroupSourceList> newSource();
    void sourceDel();

    /// Generation of the record; 0 stands for one that has not been filled in yet.
    U32 version() const { return version_; }
    void versionIs( U32 v ) { scalarIs( attrVersion, version_, v, &Kiv::Entity::NotifieeConst::onVersion ); }

    /// True makes the record the template of a block of groups.
    bool replicate() const { return replicate_; }
    void replicateIs( bool v ) { scalarIs( attrReplicate, replicate_, v, &NotifieeConst::onReplicate ); }

    /// Size of the block, the template counted.
    U32 replicateNumber() const { return replicateNumber_; }
    void replicateNumberIs( U32 v ) {
        scalarIs( attrReplicateNumber, replicateNumber_, v, &NotifieeConst::onReplicateNumber );
    }

    /// On a copy: its template's address.
    Zornet::IpAddr const& replicateGroup() const { return replicateGroup_; }
    void replicateGroupIs( Zornet::IpAddr const& v ) {
        scalarIs( attrReplicateGroup, replicateGroup_, v, &NotifieeConst::onReplicateGroup );
    }

  private:
    void orphanSource();

    Zornet::IpAddr const multicastAddr_;
    FilterMode filterMode_ = include;
    bool replicate_ = false;
    U32 version_ = 0;
    U32 replicateNumber_ = 0;
    Zornet::IpAddr replicateGroup_;
    Ptr<IgmpV3HostGroupSourceList> source_;
};

/// A record that stands alone, in no host's collection.
Ptr<IgmpV3GroupRecord> igmpV3GroupRecordFactory( Kiv::Name const& name, Zornet::IpAddr const& multicastAddr );

/// Whether the record makes a host a member of its group: exclude mode, or at least one source. False for
/// null.
bool groupIsJoined( Ptr<IgmpV3GroupRecord> const& record );

} // namespace Igmp
