#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "RangeMessage.h"
#include "platform/zornet/IntfId.h"
#include "platform/zornet/NamespaceName.h"

namespace Zornet {

using IntfIdTest = ::testing::Test;

TEST_F( IntfIdTest, DefaultIsOfTheEmptyString ) {
    EXPECT_EQ( IntfId(), IntfId( Kiv::String8( "" ) ) );
}

TEST_F( IntfIdTest, ComparesAndHashesByName ) {
    EXPECT_EQ( IntfId( "eth0" ), IntfId( "eth0" ) );
    EXPECT_NE( IntfId( "eth0" ), IntfId( "eth1" ) );
    EXPECT_LT( IntfId( "eth0" ), IntfId( "eth1" ) );
    EXPECT_EQ( IntfId( "eth0" ).hash(), IntfId( "eth0" ).hash() );
    EXPECT_NE( IntfId( "eth0" ).hash(), IntfId( "eth1" ).hash() );
}

TEST_F( IntfIdTest, PrintsItsName ) {
    std::ostringstream out;
    out << IntfId( "port 7" );
    EXPECT_EQ( out.str(), "port 7" );
}

TEST_F( IntfIdTest, ValueTraitsFormatAndParse ) {
    using Traits = Kiv::ValueTraits<IntfId>;
    EXPECT_EQ( Traits::parse( "eth0" ), IntfId( "eth0" ) );
    EXPECT_EQ( Traits::format( IntfId( "eth0" ) ), "eth0" );
}

using NamespaceNameTest = ::testing::Test;

TEST_F( NamespaceNameTest, Takes150Bytes ) {
    std::string const longest( 150, 'n' );
    EXPECT_EQ( NamespaceName( longest ).name(), Kiv::String8( longest ) );
}

TEST_F( NamespaceNameTest, Refuses151Bytes ) {
    EXPECT_EQ(
        rangeMessage( [] { NamespaceName( std::string( 151, 'n' ) ); } ),
        "NamespaceName::bytes > 150 not allowed"
    );
}

TEST_F( NamespaceNameTest, DefaultIsEmpty ) {
    EXPECT_TRUE( NamespaceName().empty() );
    EXPECT_FALSE( NamespaceName( "lab" ).empty() );
}

TEST_F( NamespaceNameTest, ComparesByName ) {
    EXPECT_EQ( NamespaceName( "lab" ), NamespaceName( "lab" ) );
    EXPECT_NE( NamespaceName( "lab" ), NamespaceName( "lac" ) );
}

TEST_F( NamespaceNameTest, ValueTraitsParseKeepsTheLimit ) {
    using Traits = Kiv::ValueTraits<NamespaceName>;
    EXPECT_EQ( Traits::format( Traits::parse( "lab" ) ), "lab" );
    EXPECT_THROW( Traits::parse( std::string( 151, 'n' ) ), Kiv::RangeException );
}

} // namespace Zornet
