#include "platform/zornet/device/NamespaceEntry.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace Zornet {

using NamespaceEntryTest = ::testing::Test;

TEST_F( NamespaceEntryTest, EmptyNameNeedsNoEntering ) {
    NamespaceEntry const entry{ NamespaceName() };
    EXPECT_EQ( entry.error(), 0 );
}

TEST_F( NamespaceEntryTest, MissingNamespaceIsNotEntered ) {
    NamespaceEntry const entry( NamespaceName( "no-namespace-has-this-name" ) );
    EXPECT_EQ( entry.error(), ENOENT );
}

TEST_F( NamespaceEntryTest, NameIsNoPath ) {
    for ( char const* name : { "../../proc/self/ns/net", ".", "..", "/proc/self/ns/net" } ) {
        NamespaceEntry const entry( ( NamespaceName( name ) ) );
        EXPECT_EQ( entry.error(), EINVAL ) << name;
    }
}

} // namespace Zornet
