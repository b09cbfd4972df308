/// The generic interface: over every class what all have in common, then what single classes offer.

#include "platform/kiv/GenericIf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "model/IgmpHostIntfConfig.h"
#include "tests/model/EveryClass.h"

namespace Igmp {

namespace {

using Kiv::Attribute;
using Kiv::AttributeKind;
using Kiv::GenericIf;
using Kiv::GenericIfPtrInterface;
using Kiv::GenericValue;
using Kiv::String8;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

constexpr U32 undefinedReading = 0x33;
constexpr U32 undefinedWriting = 0x99;

/// The text of the exception of type E that `action` raises; otherwise what happened.
template <class E, class Action>
std::string
textOf( Action action ) {
    try {
        action();
    } catch ( E const& fault ) {
        return fault.what();
    } catch ( std::exception const& other ) {
        return std::string( "another exception: " ) + other.what();
    }
    return "no exception";
}

/// A value of another type than every attribute has.
struct Foreign {
    explicit Foreign( bool = false ) {}
    bool value() const { return false; }
};
} // namespace
} // namespace Igmp

template <>
struct Kiv::ValueTraits<Igmp::Foreign> {
    static constexpr char const* name = "Foreign";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( Igmp::Foreign const& ) { return ""; }
    static Igmp::Foreign parse( std::string_view ) { return Igmp::Foreign(); }
};

namespace Igmp {
namespace {

GenericValue const foreign = GenericValue::of( Foreign() );

/// A key that the collection does not have.
GenericValue
absentKey( Attribute const& row ) {
    static std::map<std::string, std::string> const texts = {
        { "Zornet::IpAddr", "10.99.99.99" }, { "Kiv::Name", "nobody" },
        { "Zornet::IntfId", "nowhere" },     { "U16", "4000" },
        { "Bridging::VlanId", "4000" },
    };
    return { row.keyType->parse( texts.at( row.keyType->name ) ), row.keyType };
}

class GenericIfOfEveryClass : public EveryClass {
  protected:
    /// Calls `check` with a view of every object and each row that its class has.
    template <class Check>
    void walk( bool isReadOnly, Check check ) {
        for ( Ptr<Kiv::PtrInterface> const& object : objects() ) {
            ASSERT_TRUE( object );
            GenericIfPtrInterface view( object, isReadOnly );
            for ( Attribute const* row : view.attributes() ) {
                SCOPED_TRACE( std::string( object->fwkType()->name() ) + "::" + row->name );
                check( view, *row );
            }
        }
    }
};

} // namespace

TEST_F( GenericIfOfEveryClass, EveryClassIsThere ) {
    std::set<std::string> missing;
    for ( Kiv::Type const* type : Kiv::Type::types() ) {
        if ( type->kind() == Kiv::TypeKind::entity || type->kind() == Kiv::TypeKind::object ) {
            missing.insert( type->name() );
        }
    }
    for ( Ptr<Kiv::PtrInterface> const& object : objects() ) {
        ASSERT_TRUE( object );
        missing.erase( object->fwkType()->name() );
    }
    EXPECT_THAT( missing, ElementsAre() );
}

TEST_F( GenericIfOfEveryClass, AttributesAreFoundByNumberAndName ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        EXPECT_EQ( view.attributeString( row.id ), String8( row.name ) );
        EXPECT_EQ( view.attributeId( row.name ), row.id );
    } );
}

TEST_F( GenericIfOfEveryClass, EveryPlainAttributeIsReadWithItsType ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( row.read ) {
            GenericValue const read = view.attributeOp( { row.id, GenericIf::opRead } );
            EXPECT_EQ( read.type, row.type );
            EXPECT_EQ( row.type->format( read.value ), Kiv::attributeText( row, *view.obj() ) );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, EveryHeldObjectIsReadWithATypeThatItIs ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.pointer ) {
            return;
        }
        GenericValue const read = view.attributeOp( { row.id, GenericIf::opRead } );
        EXPECT_EQ( read.object, row.pointer->read( *view.obj() ) );
        Kiv::Type const* const declared = Kiv::Type::find( row.objectType );
        EXPECT_TRUE( !read.object || !declared || read.objectType->isA( declared ) );
    } );
}

TEST_F( GenericIfOfEveryClass, WriteThroughAReadOnlyViewFailsBeforeAnythingElse ) {
    walk( true, []( GenericIf& view, Attribute const& row ) {
        for ( U32 operation : { +GenericIf::opSet, +GenericIf::opDel, undefinedWriting } ) {
            EXPECT_EQ(
                textOf<Kiv::ConstException>( [&] {
                    view.attributeOp( { row.id, operation } );
                } ),
                "attempting to modify a const instance"
            );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, ReadOnlyViewReads ) {
    walk( true, []( GenericIf& view, Attribute const& row ) {
        if ( row.read || row.pointer ) {
            EXPECT_NO_THROW( view.attributeOp( { row.id, GenericIf::opRead } ) );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, KeyOnWhatIsNoCollectionIsRefused ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.collection ) {
            EXPECT_EQ(
                textOf<Kiv::BadIndexAttrException>( [&] {
                    view.attributeOp( { row.id, GenericIf::opRead }, foreign );
                } ),
                row.name
            );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, UndefinedOperationsAreRefused ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        GenericValue const key = row.collection ? absentKey( row ) : GenericValue();
        for ( U32 operation : { undefinedReading, undefinedWriting } ) {
            EXPECT_EQ(
                textOf<Kiv::OpNotSupportedException>( [&] {
                    view.attributeOp( { row.id, operation }, key );
                } ),
                row.name
            );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, OperationsOfCollectionsAreRefusedElsewhere ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        for ( U32 operation : { +GenericIf::opCount, +GenericIf::opGeneration, +GenericIf::opExists } ) {
            if ( !row.collection ) {
                EXPECT_EQ(
                    textOf<Kiv::OpNotSupportedException>( [&] {
                        view.attributeOp( { row.id, operation } );
                    } ),
                    row.name
                );
            }
        }
    } );
}

TEST_F( GenericIfOfEveryClass, WhatHasNoMutatorCannotBeSet ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( row.type && !row.write ) {
            GenericValue const same = view.attributeOp( { row.id, GenericIf::opRead } );
            EXPECT_EQ(
                textOf<Kiv::OpNotSupportedException>( [&] {
                    view.attributeOp( { row.id, GenericIf::opSet }, {}, same );
                } ),
                row.name
            );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, ValueOfAnotherTypeIsRefused ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        for ( GenericValue const& value : { foreign, GenericValue() } ) {
            if ( row.type && row.write ) {
                EXPECT_EQ(
                    textOf<Kiv::TypeException>( [&] {
                        view.attributeOp( { row.id, GenericIf::opSet }, {}, value );
                    } ),
                    row.name
                );
            }
        }
    } );
}

TEST_F( GenericIfOfEveryClass, WritableAttributesTakeTheirOwnValue ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( row.read && row.write ) {
            GenericValue const same = view.attributeOp( { row.id, GenericIf::opRead } );
            EXPECT_NO_THROW( view.attributeOp( { row.id, GenericIf::opSet }, {}, same ) );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, PointersTakeNoObjectOfAnotherClass ) {
    Ptr<Kiv::PtrInterface> const other( new Kiv::ValueHolder<int>( 1 ) );
    walk( false, [&]( GenericIf& view, Attribute const& row ) {
        if ( row.pointer && row.pointer->write ) {
            for ( GenericValue const& value : { GenericValue( other ), foreign } ) {
                EXPECT_EQ(
                    textOf<Kiv::TypeException>( [&] {
                        view.attributeOp( { row.id, GenericIf::opSet }, {}, value );
                    } ),
                    row.name
                );
            }
        }
    } );
}

TEST_F( GenericIfOfEveryClass, CollectionsNeedAKey ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        for ( U32 operation :
              { +GenericIf::opRead, +GenericIf::opExists, +GenericIf::opSet, +GenericIf::opDel } ) {
            if ( row.collection ) {
                EXPECT_EQ(
                    textOf<Kiv::UnknownArgException>( [&] {
                        view.attributeOp( { row.id, operation } );
                    } ),
                    row.name
                );
                EXPECT_EQ(
                    textOf<Kiv::TypeException>( [&] {
                        view.attributeOp( { row.id, operation }, foreign );
                    } ),
                    row.name
                );
            }
        }
    } );
}

TEST_F( GenericIfOfEveryClass, AbsentKeyIsNothingAndIsNotCreatedByLooking ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.collection ) {
            return;
        }
        auto const generation = [&] {
            return view.attributeOp( { row.id, GenericIf::opGeneration } ).as<U32>();
        };
        U32 const before = generation();
        EXPECT_FALSE( view.attributeOp( { row.id, GenericIf::opExists }, absentKey( row ) ).as<bool>() );
        EXPECT_TRUE( view.attributeOp( { row.id, GenericIf::opRead }, absentKey( row ) ).isNothing() );
        EXPECT_EQ( generation(), before );
    } );
}

TEST_F( GenericIfOfEveryClass, WalkMeetsAsManyMembersAsAreCounted ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.collection ) {
            return;
        }
        U32 met = 0;
        GenericIf::Iterator at = view.attributeIteratorConst( row.id );
        for ( ; GenericIf::attributeIterator_nonNull( at ); GenericIf::attributeIterator_iterInc( at ) ) {
            GenericValue const key = GenericIf::attributeIterator_iterKey( at );
            EXPECT_EQ( key.type, row.keyType );
            EXPECT_TRUE( view.attributeOp( { row.id, GenericIf::opExists }, key ).as<bool>() );
            EXPECT_FALSE( GenericIf::attributeIterator_iterObj( at ).isNothing() );
            ++met;
        }
        EXPECT_EQ( met, view.attributeOp( { row.id, GenericIf::opCount } ).as<U32>() );
    } );
}

TEST_F( GenericIfOfEveryClass, CollectionsThatOutsideCannotFillSaySo ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( row.collection && !row.collection->create ) {
            EXPECT_EQ(
                textOf<Kiv::OpNotSupportedException>( [&] {
                    view.attributeOp( { row.id, GenericIf::opSet }, absentKey( row ) );
                } ),
                row.name
            );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, WhatIsNoCollectionCannotBeWalked ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.collection ) {
            EXPECT_EQ(
                textOf<Kiv::BadIndexAttrException>( [&] { view.attributeIteratorConst( row.id ); } ), row.name
            );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, EveryValueIsMadeUnderItsKey ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.collection || !row.collection->create || !row.collection->valueType ) {
            return;
        }
        Kiv::ValueType const* const type = row.collection->valueType;
        GenericValue const value{ type->parse( std::string( type->name ) == "bool" ? "true" : "1" ), type };
        view.attributeOp( { row.id, GenericIf::opSet }, absentKey( row ), value );
        GenericValue const read = view.attributeOp( { row.id, GenericIf::opRead }, absentKey( row ) );
        EXPECT_EQ( type->format( read.value ), type->format( value.value ) );
    } );
}

TEST_F( GenericIfOfEveryClass, EveryMemberIsReadAndDeletedByItsKey ) {
    walk( false, []( GenericIf& view, Attribute const& row ) {
        if ( !row.collection || !row.collection->del ) {
            return;
        }
        std::vector<GenericValue> keys;
        for ( auto at = view.attributeIteratorConst( row.id ); GenericIf::attributeIterator_nonNull( at );
              GenericIf::attributeIterator_iterInc( at ) ) {
            keys.push_back( GenericIf::attributeIterator_iterKey( at ) );
            GenericValue const member = view.attributeOp( { row.id, GenericIf::opRead }, keys.back() );
            EXPECT_EQ( member.object, GenericIf::attributeIterator_iterObj( at ).object );
        }
        for ( GenericValue const& key : keys ) {
            view.attributeOp( { row.id, GenericIf::opDel }, key );
            EXPECT_FALSE( view.attributeOp( { row.id, GenericIf::opExists }, key ).as<bool>() );
        }
    } );
}

TEST_F( GenericIfOfEveryClass, UnknownAttributesAreNamed ) {
    for ( Ptr<Kiv::PtrInterface> const& object : objects() ) {
        GenericIfPtrInterface view( object );
        EXPECT_EQ( view.attributeString( 9999 ), String8( "unknown" ) );
        EXPECT_EQ(
            textOf<Kiv::UnknownAttrException>( [&] {
                view.attributeOp( { 9999, GenericIf::opRead } );
            } ),
            "unknown"
        );
        EXPECT_EQ( textOf<Kiv::UnknownAttrException>( [&] { view.attributeId( "nothing" ); } ), "nothing" );
    }
}

namespace {

/// A host that is disabled and its view.
class GenericHost : public ::testing::Test {
  protected:
    using View = IgmpHost::GenericIf_;

    static Zornet::IpAddr group( int n ) { return Zornet::IpAddr( "239.1.1." + std::to_string( n ) ); }
    static GenericValue key( int n ) { return GenericValue::of( group( n ) ); }
    GenericValue groups( U32 operation, GenericValue const& at = {} ) {
        return view_.attributeOp( { IgmpHost::attrV3group, operation }, at );
    }
    /// The keys from the iterator's place on.
    static std::vector<std::string> rest( GenericIf::Iterator at ) {
        std::vector<std::string> keys;
        for ( ; GenericIf::attributeIterator_nonNull( at ); GenericIf::attributeIterator_iterInc( at ) ) {
            GenericValue const one = GenericIf::attributeIterator_iterKey( at );
            keys.push_back( one.type->format( one.value ) );
        }
        return keys;
    }

    Ptr<IgmpHost> const host_ = igmpHostFactory( "host" );
    View view_{ host_ };
};

} // namespace

TEST_F( GenericHost, SettingRunsTheMutator ) {
    std::vector<AttributeId> told;
    Ptr<View::GenericIf_Adapter_> const adapter( new View::GenericIf_Adapter_(
        host_, [&]( AttributeId id, GenericValue const& ) { told.push_back( id ); }
    ) );
    view_.attributeOp( { view_.attributeId( "mtu" ), GenericIf::opSet }, {}, GenericValue::of( U32{ 900 } ) );
    EXPECT_EQ( host_->mtu(), 900U );
    view_.attributeOp( { IgmpHost::attrMtu, GenericIf::opSet }, {}, GenericValue::of( U32{ 900 } ) );
    EXPECT_THAT( told, ElementsAre( IgmpHost::attrMtu ) );
}

TEST_F( GenericHost, ConstantsAreReadAndCannotBeSet ) {
    std::pair<AttributeId, double> const constants[] = {
        { IgmpHost::attrMaxResponseTimeTicksPerSec, 10.0 },
        { IgmpHost::attrDefaultIgmpV3UnsolicitedReportIntvl, 1.0 },
        { IgmpHost::attrDefaultIgmpV1V2UnsolicitedReportIntvl, 10.0 },
    };
    for ( auto const& [id, value] : constants ) {
        EXPECT_EQ( view_.attributeOp( { id, GenericIf::opRead } ).as<double>(), value );
        EXPECT_EQ(
            textOf<Kiv::OpNotSupportedException>( [&, at = id] {
                view_.attributeOp( { at, GenericIf::opSet }, {}, GenericValue::of( 2.0 ) );
            } ),
            view_.attributeString( id ).charPtr()
        );
    }
}

TEST_F( GenericHost, KnowsWhatEveryEntityHas ) {
    auto const read = [this]( char const* name ) {
        return view_.attributeOp( { view_.attributeId( name ), GenericIf::opRead } );
    };
    Ptr<IgmpHostDir> const dir = igmpHostDirFactory( "hosts" );
    EXPECT_EQ( read( "name" ).as<Kiv::Name>(), Kiv::Name( "host" ) );
    EXPECT_EQ( view_.attributeOp( { 0, GenericIf::opRead } ).as<Kiv::Name>(), Kiv::Name( "host" ) );
    EXPECT_TRUE( read( "parent" ).isNothing() );
    View member( dir->igmpHostIs( "member" ) );
    EXPECT_EQ( member.attributeOp( { member.attributeId( "parent" ), GenericIf::opRead } ).object, dir );
}

TEST_F( GenericHost, GroupIsCreatedReadAndDeleted ) {
    GenericValue const made = groups( GenericIf::opSet, key( 1 ) );
    EXPECT_EQ( made.object, host_->v3group( group( 1 ) ) );
    EXPECT_EQ( made.objectType, IgmpV3GroupRecord::_fwkType() );
    EXPECT_EQ( groups( GenericIf::opSet, key( 1 ) ).object, made.object );
    EXPECT_EQ( groups( GenericIf::opRead, key( 1 ) ).object, made.object );
    EXPECT_TRUE( groups( GenericIf::opExists, key( 1 ) ).as<bool>() );
    EXPECT_EQ( groups( GenericIf::opCount ).as<U32>(), 1U );
    groups( GenericIf::opDel, key( 1 ) );
    EXPECT_EQ( host_->v3groups(), 0U );
}

TEST_F( GenericHost, GenerationMovesWithTheMembers ) {
    U32 const before = groups( GenericIf::opGeneration ).as<U32>();
    groups( GenericIf::opSet, key( 1 ) );
    U32 const after = groups( GenericIf::opGeneration ).as<U32>();
    EXPECT_NE( after, before );
    EXPECT_EQ( after, host_->v3group().generation() );
}

TEST_F( GenericHost, AdapterTellsOfKeysWithTheirType ) {
    std::vector<std::string> told;
    Ptr<View::GenericIf_Adapter_> const adapter( new View::GenericIf_Adapter_(
        host_, [&]( AttributeId id, GenericValue const& at
               ) { told.push_back( std::to_string( id ) + " " + at.type->format( at.value ) ); }
    ) );
    host_->v3groupIs( group( 1 ) );
    host_->v3groupDel( group( 1 ) );
    EXPECT_THAT( told, ElementsAre( "277 239.1.1.1", "277 239.1.1.1" ) );
}

TEST_F( GenericHost, AdapterStaysSilentWhenUnregisteredOrAZombie ) {
    int told = 0;
    Ptr<View::GenericIf_Adapter_> const adapter(
        new View::GenericIf_Adapter_( host_, [&]( AttributeId, GenericValue const& ) { ++told; } )
    );
    adapter->isRegisteredNotifieeIs( false );
    host_->mtuIs( 900 );
    adapter->isRegisteredNotifieeIs( true );
    host_->mtuIs( 901 );
    adapter->kivDoZombieReactors( true );
    host_->mtuIs( 902 );
    EXPECT_EQ( told, 1 );
}

TEST_F( GenericHost, AdapterMadeAZombieWithinAWalkIsNotTold ) {
    int told = 0;
    Ptr<View::GenericIf_Adapter_> second;
    Ptr<View::GenericIf_Adapter_> const first( new View::GenericIf_Adapter_(
        host_, [&]( AttributeId, GenericValue const& ) { second->kivDoZombieReactors( true ); }
    ) );
    second = new View::GenericIf_Adapter_( host_, [&]( AttributeId, GenericValue const& ) { ++told; } );
    host_->mtuIs( 900 );
    EXPECT_EQ( told, 0 );
}

TEST_F( GenericHost, IteratorStartsAtAKey ) {
    for ( int n = 1; n <= 5; ++n ) {
        groups( GenericIf::opSet, key( n ) );
    }
    std::vector<std::string> const all = rest( view_.attributeIteratorConst( IgmpHost::attrV3group ) );
    ASSERT_EQ( all.size(), 5U );
    GenericValue const third = GenericValue::of( Zornet::IpAddr( all[2] ) );
    EXPECT_THAT(
        rest( view_.attributeIteratorKeyConst( IgmpHost::attrV3group, third ) ),
        ElementsAre( all[2], all[3], all[4] )
    );
}

TEST_F( GenericHost, IteratorSurvivesTheDeletionUnderIt ) {
    for ( int n = 1; n <= 5; ++n ) {
        groups( GenericIf::opSet, key( n ) );
    }
    std::vector<std::string> const all = rest( view_.attributeIteratorConst( IgmpHost::attrV3group ) );
    GenericIf::Iterator at = view_.attributeIteratorConst( IgmpHost::attrV3group );
    view_.attributeIterator_iterDel( at );
    EXPECT_EQ( host_->v3groups(), 4U );
    GenericIf::attributeIterator_iterInc( at );
    EXPECT_THAT( rest( std::move( at ) ), ElementsAre( all[1], all[2], all[3], all[4] ) );
}

TEST_F( GenericHost, IteratorIsClonedAtItsPlace ) {
    groups( GenericIf::opSet, key( 1 ) );
    groups( GenericIf::opSet, key( 2 ) );
    GenericIf::Iterator at = view_.attributeIteratorConst( IgmpHost::attrV3group );
    GenericIf::Iterator clone = GenericIf::attributeIterator_iterClone( at );
    GenericIf::attributeIterator_iterInc( at );
    EXPECT_EQ( rest( std::move( clone ) ).size(), 2U );
    EXPECT_EQ( rest( std::move( at ) ).size(), 1U );
}

TEST_F( GenericHost, ReadOnlyViewDeletesNothingUnderAnIterator ) {
    host_->v3groupIs( group( 1 ) );
    View view( host_, true );
    GenericIf::Iterator at = view.attributeIteratorConst( IgmpHost::attrV3group );
    EXPECT_THROW( view.attributeIterator_iterDel( at ), Kiv::ConstException );
    EXPECT_EQ( host_->v3groups(), 1U );
}

TEST_F( GenericHost, PointerTakesAnObjectOfItsClassAndNull ) {
    Ptr<Kiv::PtrInterface> const pam( new Zornet::Pam( "outside" ) );
    view_.attributeOp( { IgmpHost::attrPam, GenericIf::opSet }, {}, pam );
    EXPECT_EQ( host_->pam(), pam );
    EXPECT_EQ( view_.attributeOp( { IgmpHost::attrPam, GenericIf::opRead } ).object, pam );
    view_.attributeOp( { IgmpHost::attrPam, GenericIf::opSet } );
    EXPECT_FALSE( host_->pam() );
}

TEST_F( GenericHost, ChildIsMadeAndDeleted ) {
    Ptr<IgmpV3GroupRecord> const record = host_->v3groupIs( group( 1 ) );
    IgmpV3GroupRecord::GenericIf_ view( record );
    EXPECT_TRUE( view.attributeOp( { IgmpV3GroupRecord::attrSource, GenericIf::opRead } ).isNothing() );
    GenericValue const made = view.attributeOp( { IgmpV3GroupRecord::attrSource, GenericIf::opSet } );
    EXPECT_EQ( made.object, record->source() );
    view.attributeOp( { IgmpV3GroupRecord::attrSource, GenericIf::opDel } );
    EXPECT_FALSE( record->source() );
}

TEST_F( GenericHost, MembersThatAreValuesAreReadAndSet ) {
    Ptr<IgmpV3HostGroupSourceList> const list = igmpV3HostGroupSourceListFactory();
    IgmpV3HostGroupSourceList::GenericIf_ view( list );
    GenericIf::AttributeOp const set{ IgmpV3HostGroupSourceList::attrSourceIp, GenericIf::opSet };
    EXPECT_EQ( view.attributeOp( set, key( 1 ), GenericValue::of( U8{ 7 } ) ).as<U8>(), 7 );
    EXPECT_EQ( list->sourceIp( group( 1 ) ), 7 );
    EXPECT_EQ( view.attributeOp( { set.id, GenericIf::opRead }, key( 1 ) ).as<U8>(), 7 );
    EXPECT_EQ(
        textOf<Kiv::TypeException>( [&] { view.attributeOp( set, key( 2 ), GenericValue::of( U32{ 7 } ) ); }
        ),
        "sourceIp"
    );
    EXPECT_EQ( list->sourceIps(), 1U );
}

TEST_F( GenericHost, WriteThroughAReadOnlyViewTouchesNothing ) {
    host_->v3groupIs( group( 1 ) );
    View view( host_, true );
    int told = 0;
    Ptr<View::GenericIf_Adapter_> const watcher(
        new View::GenericIf_Adapter_( host_, [&]( AttributeId, GenericValue const& ) { ++told; } )
    );
    U32 const mtu = host_->mtu();
    auto const refused = [&]( AttributeId id, U32 operation, GenericValue const& at,
                              GenericValue const& value ) {
        return textOf<Kiv::ConstException>( [&] { view.attributeOp( { id, operation }, at, value ); } );
    };
    std::string const text = "attempting to modify a const instance";
    EXPECT_EQ( refused( IgmpHost::attrMtu, GenericIf::opSet, {}, GenericValue::of( U32{ 900 } ) ), text );
    EXPECT_EQ( refused( IgmpHost::attrV3group, GenericIf::opSet, key( 2 ), {} ), text );
    EXPECT_EQ( refused( IgmpHost::attrV3group, GenericIf::opDel, key( 1 ), {} ), text );
    EXPECT_EQ( refused( 9999, GenericIf::opSet, {}, GenericValue::of( U32{ 900 } ) ), text );
    EXPECT_EQ( told, 0 );
    EXPECT_EQ( host_->mtu(), mtu );
    EXPECT_TRUE( host_->v3group( group( 1 ) ) && !host_->v3group( group( 2 ) ) );
}

TEST_F( GenericHost, ViewOfAConstObjectIsReadOnly ) {
    View view{ Ptr<IgmpHost const>( host_ ) };
    EXPECT_TRUE( view.isReadOnly() );
    EXPECT_FALSE( view_.isReadOnly() );
    EXPECT_TRUE( view.clone()->isReadOnly() );
}

TEST_F( GenericHost, ViewTurnsToAnotherObjectOfItsType ) {
    Ptr<IgmpHost> const other = igmpHostFactory( "other" );
    view_.voidPtrIs( other );
    EXPECT_EQ( view_.obj(), other );
    EXPECT_EQ( view_.type(), IgmpHost::_fwkType() );
    EXPECT_THROW( view_.voidPtrIs( igmpHostDirFactory( "hosts" ) ), Kiv::TypeException );
    EXPECT_THROW( view_.voidPtrIs( nullptr ), Kiv::RangeException );
    EXPECT_EQ( view_.obj(), other );
}

TEST_F( GenericHost, CloneSeesTheSameObject ) {
    Ptr<GenericIf> const clone = view_.clone();
    EXPECT_EQ( clone->obj(), host_ );
    clone->attributeOp( { IgmpHost::attrMtu, GenericIf::opSet }, {}, GenericValue::of( U32{ 900 } ) );
    EXPECT_EQ( host_->mtu(), 900U );
}

TEST_F( GenericHost, ControllerSpreadsAGroupThroughTheHelpersView ) {
    Ptr<IgmpV3GroupRecord> const record = host_->v3groupIs( group( 1 ) );
    record->replicateIs( true );
    record->replicateNumberIs( 3 );
    record->versionIs( 1 );
    IgmpHostConfigHelper::GenericIf_ helper( igmpHostConfigHelperFactory( nullptr, "host", host_ ) );
    helper.attributeOp( { helper.attributeId( "replicateGroup" ), GenericIf::opSet }, {}, key( 1 ) );
    EXPECT_THAT(
        rest( view_.attributeIteratorConst( IgmpHost::attrV3group ) ),
        UnorderedElementsAre( "239.1.1.1", "239.1.1.2", "239.1.1.3" )
    );
}

namespace {

class GenericValueForm : public ::testing::Test {
  protected:
    using View = IgmpHostIntfConfig::GenericIf_;
};

} // namespace

TEST_F( GenericValueForm, FieldsAreReadByNumberAndName ) {
    View view( IgmpHostIntfConfig( Zornet::IntfId( "trunk" ), "et1", 100 ) );
    EXPECT_EQ( view.attributeOp( { 4, GenericIf::opRead } ).as<U16>(), 100 );
    EXPECT_EQ( view.attributeId( "useMux" ), 6 );
    EXPECT_EQ( view.type(), IgmpHostIntfConfig::_fwkType() );
    EXPECT_EQ( view.clone()->attributeOp( { 4, GenericIf::opRead } ).as<U16>(), 100 );
}

TEST_F( GenericValueForm, FieldsCannotBeSet ) {
    View view{ IgmpHostIntfConfig() };
    EXPECT_THROW(
        view.attributeOp( { 4, GenericIf::opSet }, {}, GenericValue::of( U16{ 1 } ) ), Kiv::ConstException
    );
}

TEST_F( GenericValueForm, ValueIsMadeFromAListOfFields ) {
    EXPECT_EQ(
        View::genericIfListConstructor( { GenericValue::of( Zornet::IntfId( "trunk" ) ),
                                          GenericValue::of( String8( "et1" ) ), GenericValue::of( U16{ 7 } ) }
        ),
        IgmpHostIntfConfig( Zornet::IntfId( "trunk" ), "et1", 7 )
    );
    EXPECT_EQ( View::genericIfListConstructor( {} ), IgmpHostIntfConfig() );
}

TEST_F( GenericValueForm, ListOfWrongFieldsIsRefused ) {
    EXPECT_EQ(
        textOf<Kiv::TypeException>( [] {
            View::genericIfListConstructor( { GenericValue::of( String8( "trunk" ) ) } );
        } ),
        "intfId"
    );
    EXPECT_THROW(
        View::genericIfListConstructor( std::vector<GenericValue>( 6, foreign ) ), Kiv::UnknownArgException
    );
}

} // namespace Igmp
