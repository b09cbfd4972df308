#include "model/IgmpV3HostGroupSourceList.h"

namespace Igmp {

namespace {

using List = IgmpV3HostGroupSourceList;

struct SourceIp {
    using Class = List;
    using Value = U8;
    static List::SourceIps const& members( List const& list ) { return list.sourceIp(); }
    static Value value( List::KivSourceIp const& member ) { return member.value; }
    static void is( List& list, Zornet::IpAddr const& source, Value number ) {
        list.sourceIpIs( source, number );
    }
    static void del( List& list, Zornet::IpAddr const& source ) { list.sourceIpDel( source ); }
};

constexpr Kiv::Attribute table[] = {
    Kiv::collectionAttribute<SourceIp>(
        List::attrSourceIp, "sourceIp", "Igmp::IgmpV3HostGroupSourceList::KivSourceIp"
    ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

std::span<Kiv::Attribute const>
IgmpV3HostGroupSourceList::attributes() {
    return table;
}

IgmpV3HostGroupSourceList::NotifieeConst::NotifieeConst( Ptr<IgmpV3HostGroupSourceList const> const& list )
    : Kiv::Entity::NotifieeConst( list ) {}

IgmpV3HostGroupSourceList::Notifiee::Notifiee( Ptr<IgmpV3HostGroupSourceList> const& list )
    : NotifieeConst( list ) {}

U8
IgmpV3HostGroupSourceList::sourceIp( Zornet::IpAddr const& source ) const {
    KivSourceIp const* const member = sourceIp_.find( source );
    return member ? member->value : U8{ 0 };
}

Ptr<IgmpV3HostGroupSourceList::KivSourceIp>
IgmpV3HostGroupSourceList::newSourceIp( Zornet::IpAddr const& source, U8 number ) {
    return memberInsert( sourceIp_, attrSourceIp, Ptr<KivSourceIp>( new KivSourceIp( source, number ) ) );
}

void
IgmpV3HostGroupSourceList::sourceIpIs( Zornet::IpAddr const& source, U8 number ) {
    KivSourceIp* const present = sourceIp_.find( source );
    if ( present && present->value == number ) {
        return;
    }
    if ( present ) {
        present->value = number;
    } else {
        newSourceIp( source, number );
    }
    keyChanged( attrSourceIp, &NotifieeConst::onSourceIp, source );
}

U8
IgmpV3HostGroupSourceList::sourceIpInc( Zornet::IpAddr const& source, U8 by ) {
    KivSourceIp* const present = sourceIp_.find( source );
    Ptr<KivSourceIp> const member = present ? Ptr<KivSourceIp>( present ) : newSourceIp( source, 0 );
    U8 const before = member->value;
    member->value = static_cast<U8>( before + by );
    if ( member->value != before ) {
        keyChanged( attrSourceIp, &NotifieeConst::onSourceIp, source );
    }
    return member->value;
}

U8
IgmpV3HostGroupSourceList::sourceIpDec( Zornet::IpAddr const& source, U8 by ) {
    return sourceIpInc( source, static_cast<U8>( -by ) );
}

void
IgmpV3HostGroupSourceList::sourceIpDel( Zornet::IpAddr const& source ) {
    memberDel( sourceIp_, source, attrSourceIp, &NotifieeConst::onSourceIp );
}

void
IgmpV3HostGroupSourceList::sourceIpDelAll() {
    for ( SourceIps::Iterator at = sourceIp_.begin(); at; ++at ) {
        sourceIpDel( at );
    }
}

void
IgmpV3HostGroupSourceList::sourceIpNotify( Zornet::IpAddr const& source ) {
    keyNotify( attrSourceIp, &NotifieeConst::onSourceIp, source );
}

Ptr<IgmpV3HostGroupSourceList>
igmpV3HostGroupSourceListFactory() {
    return new IgmpV3HostGroupSourceList;
}

void
decrementAllCounter( Ptr<IgmpV3HostGroupSourceList> const& list ) {
    for ( auto sourceIter = list->sourceIp().begin(); sourceIter; ++sourceIter ) {
        Kiv::invariant( sourceIter->value > 0, "*sourceIter > 0" );
        if ( sourceIter->value == 1 ) {
            list->sourceIpDel( sourceIter );
        } else {
            list->sourceIpDec( sourceIter->key, 1 );
        }
    }
}

} // namespace Igmp
