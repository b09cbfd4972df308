#include "model/IgmpHostStatusDir.h"

namespace Igmp {

namespace {

struct Members {
    using Class = IgmpHostStatusDir;
    static IgmpHostStatusDir::IgmpHostStatuss const& members( IgmpHostStatusDir const& dir ) {
        return dir.igmpHostStatus();
    }
    static void is( IgmpHostStatusDir& dir, Kiv::Name const& key ) { dir.igmpHostStatusIs( key ); }
    static void del( IgmpHostStatusDir& dir, Kiv::Name const& key ) { dir.igmpHostStatusDel( key ); }
};

constexpr Kiv::Attribute table[] = {
    Kiv::collectionAttribute<Members>(
        IgmpHostStatusDir::attrIgmpHostStatus, "igmpHostStatus", "Igmp::IgmpHostStatus"
    ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

IgmpHostStatusDir::~IgmpHostStatusDir() {
    orphanAll( igmpHostStatus_ );
}

std::span<Kiv::Attribute const>
IgmpHostStatusDir::attributes() {
    return table;
}

IgmpHostStatusDir::NotifieeConst::NotifieeConst( Ptr<IgmpHostStatusDir const> const& dir )
    : Kiv::Entity::NotifieeConst( dir ) {}

IgmpHostStatusDir::Notifiee::Notifiee( Ptr<IgmpHostStatusDir> const& dir ) : NotifieeConst( dir ) {}

IgmpHostStatusDir*
IgmpHostStatusDir::Notifiee::notifier() const {
    return const_cast<IgmpHostStatusDir*>( static_cast<IgmpHostStatusDir const*>( notifierEntity() ) );
}

Ptr<IgmpHostStatus>
IgmpHostStatusDir::newIgmpHostStatus( Kiv::Name const& key ) {
    return memberInsert( igmpHostStatus_, attrIgmpHostStatus, igmpHostStatusFactory( key ) );
}

Ptr<IgmpHostStatus>
IgmpHostStatusDir::igmpHostStatusIs( Kiv::Name const& key ) {
    return memberIs(
        igmpHostStatus_, key, attrIgmpHostStatus, &NotifieeConst::onIgmpHostStatus,
        [this]( Kiv::Name const& name ) { return newIgmpHostStatus( name ); }
    );
}

void
IgmpHostStatusDir::igmpHostStatusDel( Kiv::Name const& key ) {
    memberDel( igmpHostStatus_, key, attrIgmpHostStatus, &NotifieeConst::onIgmpHostStatus );
}

void
IgmpHostStatusDir::igmpHostStatusDelAll() {
    for ( IgmpHostStatuss::Iterator at = igmpHostStatus_.begin(); at; ++at ) {
        igmpHostStatusDel( at );
    }
}

void
IgmpHostStatusDir::igmpHostStatusNotify( Kiv::Name const& key ) {
    keyNotify( attrIgmpHostStatus, &NotifieeConst::onIgmpHostStatus, key );
}

Ptr<IgmpHostStatusDir>
igmpHostStatusDirFactory( Kiv::Name const& name ) {
    return new IgmpHostStatusDir( name );
}

} // namespace Igmp
