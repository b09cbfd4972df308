#include "platform/kiv/HashMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "platform/kiv/PtrInterface.h"

namespace {

using Kiv::Ptr;
using Kiv::U32;

/// A key whose hash the test chooses.
struct Key {
    U32 number = 0;
    U32 hashValue = number * 2654435761U;

    U32 hash() const { return hashValue; }
    friend bool operator==( Key const& a, Key const& b ) { return a.number == b.number; }
    friend bool operator<( Key const& a, Key const& b ) { return a.number < b.number; }
};

class Member : public Kiv::PtrInterface, public Kiv::HashMember {
  public:
    explicit Member( Key const& key ) : key_( key ) { ++alive; }
    ~Member() override { --alive; }
    Key const& fwkKey() const { return key_; }
    static inline int alive = 0;

  private:
    Key key_;
};

using Map = Kiv::HashMap<Member, Key>;
using Numbers = std::vector<U32>;

class HashMapTest : public ::testing::Test {
  protected:
    ~HashMapTest() override {
        map_.clear();
        EXPECT_EQ( Member::alive, 0 );
    }
    static void insert( Map& map, Key const& key ) { map.insert( new Member( key ) ); }
    void fill( U32 count ) {
        for ( U32 n = 0; n < count; ++n ) {
            insert( map_, { n } );
        }
    }
    static Numbers walk( Map const& map ) {
        Numbers numbers;
        for ( Member const& member : map ) {
            numbers.push_back( member.fwkKey().number );
        }
        return numbers;
    }

    Map map_;
};

TEST_F( HashMapTest, BitReverseTurnsTheWordRound ) {
    EXPECT_EQ( Kiv::bitReverse( 0x00000001U ), 0x80000000U );
    EXPECT_EQ( Kiv::bitReverse( 0x12345678U ), 0x1e6a2c48U );
    EXPECT_EQ( Kiv::bitReverse( Kiv::bitReverse( 0xdeadbeefU ) ), 0xdeadbeefU );
}

TEST_F( HashMapTest, EmptyMapHasNothing ) {
    EXPECT_EQ( map_.size(), 0U );
    EXPECT_EQ( map_.find( { 1 } ), nullptr );
    EXPECT_EQ( map_.remove( { 1 } ), nullptr );
    EXPECT_FALSE( map_.begin() );
    EXPECT_FALSE( map_.startAtHash( { 1 } ) );
}

TEST_F( HashMapTest, FindsWhatWasInsertedAtEverySize ) {
    for ( U32 count = 1; count <= 100; ++count ) {
        insert( map_, { count } );
        for ( U32 n = 1; n <= count; ++n ) {
            ASSERT_NE( map_.find( { n } ), nullptr ) << n << " of " << count;
        }
        ASSERT_EQ( map_.find( { count + 1 } ), nullptr );
        ASSERT_EQ( map_.size(), count );
    }
}

TEST_F( HashMapTest, HoldsOneReferenceToEachMember ) {
    Ptr<Member> const member( new Member( { 1 } ) );
    map_.insert( member );
    EXPECT_EQ( member->references(), 2U );
    map_.remove( { 1 } );
    EXPECT_EQ( member->references(), 1U );
}

TEST_F( HashMapTest, RemoveReturnsTheMember ) {
    fill( 3 );
    Ptr<Member> const removed = map_.remove( { 1 } );
    ASSERT_NE( removed, nullptr );
    EXPECT_EQ( removed->fwkKey().number, 1U );
    EXPECT_EQ( map_.find( { 1 } ), nullptr );
    EXPECT_EQ( map_.size(), 2U );
}

TEST_F( HashMapTest, MapGivesItsReferencesBackWhenItGoes ) {
    {
        Map map;
        insert( map, { 1 } );
        insert( map, { 2 } );
        EXPECT_EQ( Member::alive, 2 );
    }
    EXPECT_EQ( Member::alive, 0 );
}

TEST_F( HashMapTest, WalkGoesByAscendingReversedHash ) {
    fill( 50 );
    Numbers const numbers = walk( map_ );
    EXPECT_EQ( numbers.size(), 50U );
    EXPECT_TRUE( std::is_sorted( numbers.begin(), numbers.end(), []( U32 a, U32 b ) {
        return Kiv::bitReverse( Key{ a }.hash() ) < Kiv::bitReverse( Key{ b }.hash() );
    } ) );
}

TEST_F( HashMapTest, OrderDoesNotDependOnInsertion ) {
    Numbers numbers( 200 );
    std::generate( numbers.begin(), numbers.end(), [n = 0U]() mutable { return n++; } );
    fill( 200 );
    std::mt19937 random( 1 );
    for ( int round = 0; round < 5; ++round ) {
        std::shuffle( numbers.begin(), numbers.end(), random );
        Map other;
        for ( U32 n : numbers ) {
            insert( other, { n } );
        }
        EXPECT_EQ( walk( other ), walk( map_ ) );
    }
}

TEST_F( HashMapTest, OrderDoesNotDependOnTheSizeOfTheTable ) {
    fill( 5 );
    Numbers const small = walk( map_ );
    for ( U32 n = 5; n < 1000; ++n ) {
        insert( map_, { n } );
    }
    for ( U32 n = 5; n < 1000; ++n ) {
        map_.remove( { n } );
    }
    EXPECT_EQ( walk( map_ ), small );
}

TEST_F( HashMapTest, EqualHashesStandInTheOrderOfTheirKeys ) {
    for ( U32 n : { 7U, 3U, 9U, 1U } ) {
        insert( map_, { n, 0xabcdU } );
    }
    EXPECT_EQ( walk( map_ ), ( Numbers{ 1, 3, 7, 9 } ) );
    EXPECT_EQ( map_.find( { 3, 0xabcdU } )->fwkKey().number, 3U );
    EXPECT_EQ( map_.find( { 4, 0xabcdU } ), nullptr );
}

TEST_F( HashMapTest, PlacesOfKeysStandInTheOrderOfTheWalk ) {
    fill( 100 );
    for ( U32 n : { 207U, 203U, 209U } ) {
        insert( map_, { n, 0xabcdU } );
    }
    std::set<Kiv::WalkPlace<Key>> places;
    for ( Member const& member : map_ ) {
        places.emplace( member.fwkKey() );
    }
    Numbers byPlace;
    for ( auto const& place : places ) {
        byPlace.push_back( place.key.number );
    }
    EXPECT_EQ( byPlace, walk( map_ ) );
}

TEST_F( HashMapTest, CurrentMemberMayBeRemovedWhileWalking ) {
    fill( 100 );
    Numbers seen;
    Numbers const all = walk( map_ );
    for ( auto at = map_.begin(); at; ++at ) {
        seen.push_back( at->fwkKey().number );
        map_.remove( at->fwkKey() );
    }
    EXPECT_EQ( seen, all );
    EXPECT_EQ( map_.size(), 0U );
}

TEST_F( HashMapTest, RemovedMemberStaysUsableUnderTheIterator ) {
    fill( 3 );
    auto at = map_.begin();
    U32 const number = at->fwkKey().number;
    map_.remove( at->fwkKey() );
    EXPECT_EQ( at->fwkKey().number, number );
    EXPECT_EQ( Member::alive, 3 );
    ++at;
    EXPECT_EQ( Member::alive, 2 );
}

TEST_F( HashMapTest, NextMemberMayBeRemovedWhileWalking ) {
    fill( 20 );
    Numbers const all = walk( map_ );
    Numbers seen;
    for ( auto at = map_.begin(); at; ++at ) {
        seen.push_back( at->fwkKey().number );
        auto const place = std::find( all.begin(), all.end(), seen.back() );
        if ( place + 1 != all.end() ) {
            map_.remove( { place[1] } );
        }
    }
    Numbers everyOther;
    for ( std::size_t i = 0; i < all.size(); i += 2 ) {
        everyOther.push_back( all[i] );
    }
    EXPECT_EQ( seen, everyOther );
}

TEST_F( HashMapTest, AllMembersMayBeRemovedWhileWalking ) {
    fill( 20 );
    int met = 0;
    for ( auto at = map_.begin(); at; ++at ) {
        ++met;
        map_.clear();
    }
    EXPECT_EQ( met, 1 );
}

TEST_F( HashMapTest, MembersOfEqualHashSurviveRemovalWhileWalking ) {
    for ( U32 n = 0; n < 5; ++n ) {
        insert( map_, { n, 0x77U } );
    }
    Numbers seen;
    for ( auto at = map_.begin(); at; ++at ) {
        seen.push_back( at->fwkKey().number );
        map_.remove( { at->fwkKey().number, 0x77U } );
    }
    EXPECT_EQ( seen, ( Numbers{ 0, 1, 2, 3, 4 } ) );
}

TEST_F( HashMapTest, WalkSurvivesGrowth ) {
    fill( 4 );
    Numbers const first = walk( map_ );
    Numbers seen;
    for ( auto at = map_.begin(); at; ++at ) {
        U32 const number = at->fwkKey().number;
        if ( seen.empty() ) {
            for ( U32 n = 4; n < 64; ++n ) {
                insert( map_, { n } );
            }
        }
        seen.push_back( number );
    }
    Numbers const all = walk( map_ );
    auto const start = std::find( all.begin(), all.end(), first.front() );
    EXPECT_EQ( seen, Numbers( start, all.end() ) );
}

TEST_F( HashMapTest, MemberPutBackUnderTheIteratorIsNotMetAgain ) {
    fill( 8 );
    Numbers const all = walk( map_ );
    Numbers seen;
    for ( auto at = map_.begin(); at; ++at ) {
        Key const key = at->fwkKey();
        seen.push_back( key.number );
        map_.remove( key );
        insert( map_, key );
    }
    EXPECT_EQ( seen, all );
}

TEST_F( HashMapTest, StartsAtTheMemberOfAKey ) {
    fill( 30 );
    Numbers const all = walk( map_ );
    EXPECT_EQ( map_.startAtHash( { all[10] } )->fwkKey().number, all[10] );
}

TEST_F( HashMapTest, StartsWhereAnAbsentKeyWouldStand ) {
    fill( 30 );
    Numbers const all = walk( map_ );
    for ( std::size_t i = 0; i + 1 < all.size(); ++i ) {
        map_.remove( { all[i] } );
        EXPECT_EQ( map_.startAtHash( { all[i] } )->fwkKey().number, all[i + 1] );
    }
    map_.remove( { all.back() } );
    EXPECT_FALSE( map_.startAtHash( { all.back() } ) );
}

TEST_F( HashMapTest, GenerationRisesWithInsertionAndRemoval ) {
    U32 const before = map_.generation();
    fill( 1 );
    EXPECT_EQ( map_.generation(), before + 1 );
    map_.remove( { 0 } );
    EXPECT_EQ( map_.generation(), before + 2 );
    map_.remove( { 0 } );
    EXPECT_EQ( map_.generation(), before + 2 );
}

TEST_F( HashMapTest, MemberMayReenterTheMapFromItsDestructor ) {
    struct Guest : Member {
        Guest( Key const& key, Map& map ) : Member( key ), map_( map ) {}
        ~Guest() override { map_.remove( { 2 } ); }
        Map& map_;
    };
    map_.insert( new Guest( { 1 }, map_ ) );
    insert( map_, { 2 } );
    map_.remove( { 1 } );
    EXPECT_EQ( map_.size(), 0U );
}

TEST_F( HashMapTest, ClearingTakesWhatIsInsertedMeanwhile ) {
    struct Phoenix : Member {
        Phoenix( Key const& key, Map& map ) : Member( key ), map_( map ) {}
        ~Phoenix() override { insert( map_, { fwkKey().number + 1 } ); }
        Map& map_;
    };
    map_.insert( new Phoenix( { 1 }, map_ ) );
    map_.clear();
    EXPECT_EQ( map_.size(), 0U );
    EXPECT_EQ( Member::alive, 0 );
}

/// Would take minutes if each removal looked for the first member from the start of the table.
TEST_F( HashMapTest, ClearingALargeMapIsOneWalk ) {
    fill( 200'000 );
    map_.clear();
    EXPECT_EQ( map_.size(), 0U );
}

TEST_F( HashMapTest, AgreesWithAReferenceOverRandomOperations ) {
    std::mt19937 random( 20 );
    std::map<std::pair<U32, U32>, U32> reference; // by reversed hash, then number
    for ( int i = 0; i < 20'000; ++i ) {
        U32 const number = static_cast<U32>( random() % 300 );
        Key const key{ number, number % 50 * 2654435761U }; // six keys a hash
        auto const place = std::pair( Kiv::bitReverse( key.hash() ), number );
        if ( random() % 2 == 0 && !reference.contains( place ) ) {
            insert( map_, key );
            reference[place] = number;
        } else {
            ASSERT_EQ( map_.remove( key ) != nullptr, reference.erase( place ) == 1 );
        }
        ASSERT_EQ( map_.size(), reference.size() );
    }
    Numbers expected;
    for ( auto const& [place, number] : reference ) {
        expected.push_back( number );
    }
    EXPECT_EQ( walk( map_ ), expected );
}

} // namespace
