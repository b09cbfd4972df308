#include "model/IgmpHostDir.h"

namespace Igmp {

namespace {

struct Members {
    using Class = IgmpHostDir;
    static IgmpHostDir::IgmpHosts const& members( IgmpHostDir const& dir ) { return dir.igmpHost(); }
    static void is( IgmpHostDir& dir, Kiv::Name const& key ) { dir.igmpHostIs( key ); }
    static void del( IgmpHostDir& dir, Kiv::Name const& key ) { dir.igmpHostDel( key ); }
};

constexpr Kiv::Attribute table[] = {
    Kiv::collectionAttribute<Members>( IgmpHostDir::attrIgmpHost, "igmpHost", "Igmp::IgmpHost" ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

IgmpHostDir::~IgmpHostDir() {
    orphanAll( igmpHost_ );
}

std::span<Kiv::Attribute const>
IgmpHostDir::attributes() {
    return table;
}

IgmpHostDir::NotifieeConst::NotifieeConst( Ptr<IgmpHostDir const> const& dir )
    : Kiv::Entity::NotifieeConst( dir ) {}

IgmpHostDir::Notifiee::Notifiee( Ptr<IgmpHostDir> const& dir ) : NotifieeConst( dir ) {}

IgmpHostDir*
IgmpHostDir::Notifiee::notifier() const {
    return const_cast<IgmpHostDir*>( static_cast<IgmpHostDir const*>( notifierEntity() ) );
}

Ptr<IgmpHost>
IgmpHostDir::newIgmpHost( Kiv::Name const& key ) {
    return memberInsert( igmpHost_, attrIgmpHost, igmpHostFactory( key ) );
}

Ptr<IgmpHost>
IgmpHostDir::igmpHostIs( Kiv::Name const& key ) {
    return memberIs(
        igmpHost_, key, attrIgmpHost, &NotifieeConst::onIgmpHost,
        [this]( Kiv::Name const& name ) { return newIgmpHost( name ); }
    );
}

void
IgmpHostDir::igmpHostDel( Kiv::Name const& key ) {
    memberDel( igmpHost_, key, attrIgmpHost, &NotifieeConst::onIgmpHost );
}

void
IgmpHostDir::igmpHostDelAll() {
    for ( IgmpHosts::Iterator at = igmpHost_.begin(); at; ++at ) {
        igmpHostDel( at );
    }
}

void
IgmpHostDir::igmpHostNotify( Kiv::Name const& key ) {
    keyNotify( attrIgmpHost, &NotifieeConst::onIgmpHost, key );
}

Ptr<IgmpHostDir>
igmpHostDirFactory( Kiv::Name const& name ) {
    return new IgmpHostDir( name );
}

} // namespace Igmp
