#include "agent/scenario/Suggestion.h"

#include <gtest/gtest.h>

namespace Agent {

namespace {

constexpr std::string_view known[] = { "name", "count", "ipAddr", "vlanId", "vlanStep" };

TEST( Suggestion, MisspeltWordLeadsToTheNearestOne ) {
    EXPECT_EQ( nearest( "ipAdr", known ), "ipAddr" );
    EXPECT_EQ( nearest( "vlanIdd", known ), "vlanId" );
    EXPECT_EQ( nearest( "cuont", known ), "count" );
}

TEST( Suggestion, CaseDoesNotCount ) {
    EXPECT_EQ( nearest( "IPADDR", known ), "ipAddr" );
}

TEST( Suggestion, FarWordLeadsNowhere ) {
    EXPECT_EQ( nearest( "frobnicate", known ), "" );
    EXPECT_EQ( nearest( "", known ), "" );
}

TEST( Suggestion, ShortWordsMustBeVeryNear ) {
    EXPECT_EQ( nearest( "pam", known ), "" );
    EXPECT_EQ( nearest( "nam", known ), "name" );
}

TEST( Suggestion, VersionOfTheProtocolIsNoMisspelling ) {
    constexpr std::string_view counters[] = { "v1ReportsSent", "v3ReportErrors", "v3StateChangeReportSent" };
    EXPECT_EQ( nearest( "v3ReportErors", counters ), "v3ReportErrors" );
    EXPECT_EQ(
        suggestion( "v3ReportsSent", counters ), "; expected one of v3ReportErrors, v3StateChangeReportSent"
    );
    EXPECT_EQ( nearest( "v2ReportsSent", counters ), "v1ReportsSent" ); // nothing is known of version 2
}

TEST( Suggestion, MessageNamesTheNearWordOrAllOfThem ) {
    EXPECT_EQ( suggestion( "nmae", known ), "; did you mean 'name'?" );
    EXPECT_EQ( suggestion( "frobnicate", known ), "; expected one of name, count, ipAddr, vlanId, vlanStep" );
}

} // namespace

} // namespace Agent
