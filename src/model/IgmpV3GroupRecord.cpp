#include "model/IgmpV3GroupRecord.h"

namespace Igmp {

namespace {

using Kiv::AttributeKind;
using Record = IgmpV3GroupRecord;
using Watcher = IgmpV3GroupRecord::NotifieeConst;

constexpr Kiv::Attribute table[] = {
    Kiv::readOnlyAttribute<&Record::multicastAddr>(
        Record::attrMulticastAddr, "multicastAddr", AttributeKind::argument, nullptr, "Address of the group"
    ),
    Kiv::scalarAttribute<&Record::filterMode, &Record::filterModeIs, &Watcher::onFilterMode>(
        Record::attrFilterMode, "filterMode", "MODE_IS_INCLUDE",
        "include wants the sources that are named, exclude all but them"
    ),
    Kiv::containedAttribute<&Record::source, &Record::sourceIs, &Record::sourceDel>(
        Record::attrSource, "source", "Igmp::IgmpV3HostGroupSourceList"
    ),
    announcing(
        Kiv::scalarAttribute<&Record::version, &Record::versionIs, &Kiv::Entity::NotifieeConst::onVersion>(
            Record::attrVersion, "version", "0",
            "Generation of the record; a move of it makes mode and sources take effect"
        )
    ),
    Kiv::scalarAttribute<&Record::replicate, &Record::replicateIs, &Watcher::onReplicate>(
        Record::attrReplicate, "replicate", "false",
        "Make the record the template of a block of groups, which the engine keeps alike"
    ),
    Kiv::scalarAttribute<&Record::replicateNumber, &Record::replicateNumberIs, &Watcher::onReplicateNumber>(
        Record::attrReplicateNumber, "replicateNumber", "0",
        "Size of the block of a template, the template counted; below 2 there are no copies"
    ),
    Kiv::scalarAttribute<&Record::replicateGroup, &Record::replicateGroupIs, &Watcher::onReplicateGroup>(
        Record::attrReplicateGroup, "replicateGroup", "0.0.0.0", "On a copy: address of its template"
    ),
};
static_assert( Kiv::idsAscendFrom( table, 258 ) );

} // namespace

std::span<Kiv::Attribute const>
IgmpV3GroupRecord::attributes() {
    return table;
}

IgmpV3GroupRecord::NotifieeConst::NotifieeConst( Ptr<IgmpV3GroupRecord const> const& record )
    : Kiv::Entity::NotifieeConst( record ) {}

IgmpV3GroupRecord::Notifiee::Notifiee( Ptr<IgmpV3GroupRecord> const& record ) : NotifieeConst( record ) {}

IgmpV3GroupRecord*
IgmpV3GroupRecord::Notifiee::notifier() const {
    return const_cast<IgmpV3GroupRecord*>( static_cast<IgmpV3GroupRecord const*>( notifierEntity() ) );
}

Ptr<IgmpV3HostGroupSourceList>
IgmpV3GroupRecord::newSource() {
    orphanSource();
    source_ = igmpV3HostGroupSourceListFactory();
    adopt( attrSource, *source_ );
    return source_;
}

Ptr<IgmpV3HostGroupSourceList>
IgmpV3GroupRecord::sourceIs() {
    if ( !source_ ) {
        validPtr( newSource() );
        changed( attrSource, &NotifieeConst::onSource );
    }
    return source_;
}

/// A list that somebody still holds has no record any more.
void
IgmpV3GroupRecord::orphanSource() {
    if ( source_ ) {
        orphan( *source_ );
    }
}

void
IgmpV3GroupRecord::sourceDel() {
    if ( source_ ) {
        orphanSource();
        source_ = nullptr;
        changed( attrSource, &NotifieeConst::onSource );
    }
}

Ptr<IgmpV3GroupRecord>
igmpV3GroupRecordFactory( Kiv::Name const& name, Zornet::IpAddr const& multicastAddr ) {
    return new IgmpV3GroupRecord( name, multicastAddr );
}

bool
groupIsJoined( Ptr<IgmpV3GroupRecord> const& record ) {
    if ( !record ) {
        return false;
    }
    return record->filterMode() == IgmpV3GroupRecord::exclude ||
           ( record->source() && record->source()->sourceIps() != 0 );
}

} // namespace Igmp
