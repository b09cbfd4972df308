/// The two directories, which differ in their members only.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/model/Watchers.h"

namespace Igmp {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// The operations of IgmpHostDir under names that both have.
struct Hosts {
    using Dir = IgmpHostDir;
    using Watcher = HostDirWatcher;
    static constexpr char const* attribute = "igmpHost ";
    static Ptr<Dir> make() { return igmpHostDirFactory( "dir" ); }
    static auto is( Dir& dir, char const* name ) { return dir.igmpHostIs( name ); }
    static auto lowerForm( Dir& dir, char const* name ) { return dir.newIgmpHost( name ); }
    static auto find( Dir& dir, char const* name ) { return dir.igmpHost( name ); }
    static auto const& members( Dir& dir ) { return dir.igmpHost(); }
    static std::size_t count( Dir& dir ) { return dir.igmpHosts(); }
    static void notify( Dir& dir, char const* name ) { dir.igmpHostNotify( name ); }
    static void delAll( Dir& dir ) { dir.igmpHostDelAll(); }
    template <class Key>
    static void del( Dir& dir, Key const& key ) {
        dir.igmpHostDel( key );
    }
};

struct Statuses {
    using Dir = IgmpHostStatusDir;
    using Watcher = StatusDirWatcher;
    static constexpr char const* attribute = "igmpHostStatus ";
    static Ptr<Dir> make() { return igmpHostStatusDirFactory( "dir" ); }
    static auto is( Dir& dir, char const* name ) { return dir.igmpHostStatusIs( name ); }
    static auto lowerForm( Dir& dir, char const* name ) { return dir.newIgmpHostStatus( name ); }
    static auto find( Dir& dir, char const* name ) { return dir.igmpHostStatus( name ); }
    static auto const& members( Dir& dir ) { return dir.igmpHostStatus(); }
    static std::size_t count( Dir& dir ) { return dir.igmpHostStatuss(); }
    static void notify( Dir& dir, char const* name ) { dir.igmpHostStatusNotify( name ); }
    static void delAll( Dir& dir ) { dir.igmpHostStatusDelAll(); }
    template <class Key>
    static void del( Dir& dir, Key const& key ) {
        dir.igmpHostStatusDel( key );
    }
};

} // namespace

template <class T>
class Directories : public ::testing::Test {
  protected:
    static std::string told( std::string const& name ) { return T::attribute + name; }
    /// The members' names in the order of the walk, as the watcher writes them.
    Log walk() {
        Log names;
        for ( auto& member : T::members( *dir ) ) {
            names.push_back( told( member.name().charPtr() ) );
        }
        return names;
    }

    Ptr<typename T::Dir> dir = T::make();
    Log log;
    Ptr<typename T::Watcher> watcher{ new typename T::Watcher( dir, log ) };
};

using Kinds = ::testing::Types<Hosts, Statuses>;
TYPED_TEST_SUITE( Directories, Kinds );

TYPED_TEST( Directories, NewOneIsEmpty ) {
    EXPECT_EQ( this->dir->name(), Kiv::Name( "dir" ) );
    EXPECT_EQ( TypeParam::count( *this->dir ), 0U );
    EXPECT_EQ( TypeParam::find( *this->dir, "a" ), nullptr );
}

TYPED_TEST( Directories, AskedTwiceForOneNameGivesOneMemberAndTellsOnce ) {
    auto const member = TypeParam::is( *this->dir, "a" );
    EXPECT_EQ( TypeParam::is( *this->dir, "a" ), member );
    EXPECT_EQ( TypeParam::find( *this->dir, "a" ), member );
    EXPECT_EQ( TypeParam::count( *this->dir ), 1U );
    EXPECT_THAT( this->log, ElementsAre( this->told( "a" ) ) );
}

TYPED_TEST( Directories, MemberHasItsNameAndTheDirectoryAsParent ) {
    auto const member = TypeParam::is( *this->dir, "a" );
    EXPECT_EQ( member->name(), Kiv::Name( "a" ) );
    EXPECT_EQ( member->parent(), this->dir.get() );
    EXPECT_EQ( member->parentAttrId(), 258 );
    EXPECT_EQ( member->parentAttr(), 258 );
}

TYPED_TEST( Directories, LowerFormTakesAMemberInUntold ) {
    auto const member = TypeParam::lowerForm( *this->dir, "a" );
    EXPECT_EQ( TypeParam::find( *this->dir, "a" ), member );
    EXPECT_EQ( member->parentAttrId(), 258 );
    EXPECT_THAT( this->log, IsEmpty() );
}

TYPED_TEST( Directories, DeletedMemberIsToldOfAndHasNoParent ) {
    auto const member = TypeParam::is( *this->dir, "a" );
    this->log.clear();
    TypeParam::del( *this->dir, "a" );
    EXPECT_EQ( TypeParam::find( *this->dir, "a" ), nullptr );
    EXPECT_EQ( member->parent(), nullptr );
    EXPECT_THAT( this->log, ElementsAre( this->told( "a" ) ) );
}

TYPED_TEST( Directories, DeletingAnUnknownNameChangesNothingAndTellsNobody ) {
    TypeParam::is( *this->dir, "a" );
    this->log.clear();
    TypeParam::del( *this->dir, "b" );
    EXPECT_EQ( TypeParam::count( *this->dir ), 1U );
    EXPECT_THAT( this->log, IsEmpty() );
}

TYPED_TEST( Directories, MemberIsDeletedUnderAnIterator ) {
    TypeParam::is( *this->dir, "a" );
    this->log.clear();
    TypeParam::del( *this->dir, TypeParam::members( *this->dir ).begin() );
    EXPECT_EQ( TypeParam::count( *this->dir ), 0U );
    EXPECT_THAT( this->log, ElementsAre( this->told( "a" ) ) );
}

TYPED_TEST( Directories, DeletingAllTellsOfEachInTheOrderOfTheWalk ) {
    for ( char const* name : { "a", "b", "c", "d", "e", "f", "g" } ) {
        TypeParam::is( *this->dir, name );
    }
    Log const inOrder = this->walk();
    this->log.clear();
    TypeParam::delAll( *this->dir );
    EXPECT_EQ( TypeParam::count( *this->dir ), 0U );
    EXPECT_EQ( this->log.size(), 7U );
    EXPECT_EQ( this->log, inOrder );
}

TYPED_TEST( Directories, NameCanBeToldOfWithoutAChange ) {
    TypeParam::notify( *this->dir, "a" );
    EXPECT_EQ( TypeParam::count( *this->dir ), 0U );
    EXPECT_EQ( this->dir->modificationCount(), 0U );
    EXPECT_THAT( this->log, ElementsAre( this->told( "a" ) ) );
}

TYPED_TEST( Directories, MemberThatOutlivesItsDirectoryHasNoParent ) {
    auto const member = TypeParam::is( *this->dir, "a" );
    this->watcher = nullptr;
    this->dir = nullptr;
    EXPECT_EQ( member->parent(), nullptr );
}

} // namespace Igmp
