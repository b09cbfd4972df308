#include "model/IgmpHostStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/model/Watchers.h"

namespace Igmp {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A counter by name, with its three operations.
struct Counter {
    char const* name;
    U32 ( IgmpHostStatus::*value )() const;
    void ( IgmpHostStatus::*is )( U32 );
    void ( IgmpHostStatus::*inc )( U32 );
};

using S = IgmpHostStatus;
constexpr Counter counters[] = {
    { "v1QueryReceived", &S::v1QueryReceived, &S::v1QueryReceivedIs, &S::v1QueryReceivedInc },
    { "v1ReportsSent", &S::v1ReportsSent, &S::v1ReportsSentIs, &S::v1ReportsSentInc },
    { "v12ReportReceived", &S::v12ReportReceived, &S::v12ReportReceivedIs, &S::v12ReportReceivedInc },
    { "v2GeneralQueryReceived", &S::v2GeneralQueryReceived, &S::v2GeneralQueryReceivedIs,
      &S::v2GeneralQueryReceivedInc },
    { "v2GroupQueryReceived", &S::v2GroupQueryReceived, &S::v2GroupQueryReceivedIs,
      &S::v2GroupQueryReceivedInc },
    { "v2ReportsSent", &S::v2ReportsSent, &S::v2ReportsSentIs, &S::v2ReportsSentInc },
    { "v2LeavesSent", &S::v2LeavesSent, &S::v2LeavesSentIs, &S::v2LeavesSentInc },
    { "v3GeneralQueryReceived", &S::v3GeneralQueryReceived, &S::v3GeneralQueryReceivedIs,
      &S::v3GeneralQueryReceivedInc },
    { "v3GroupQueryReceived", &S::v3GroupQueryReceived, &S::v3GroupQueryReceivedIs,
      &S::v3GroupQueryReceivedInc },
    { "v3GroupSourceQueryReceived", &S::v3GroupSourceQueryReceived, &S::v3GroupSourceQueryReceivedIs,
      &S::v3GroupSourceQueryReceivedInc },
    { "v3ReportReceived", &S::v3ReportReceived, &S::v3ReportReceivedIs, &S::v3ReportReceivedInc },
    { "v3CurrentStateReportSent", &S::v3CurrentStateReportSent, &S::v3CurrentStateReportSentIs,
      &S::v3CurrentStateReportSentInc },
    { "v3StateChangeReportSent", &S::v3StateChangeReportSent, &S::v3StateChangeReportSentIs,
      &S::v3StateChangeReportSentInc },
    { "numPacketInitialized", &S::numPacketInitialized, &S::numPacketInitializedIs,
      &S::numPacketInitializedInc },
};

} // namespace

class IgmpHostStatusTest : public ::testing::Test {
  protected:
    Ptr<IgmpHostStatus> const status = igmpHostStatusFactory( "host" );
    Log log;
    Ptr<StatusWatcher> const watcher{ new StatusWatcher( status, log ) };
};

TEST_F( IgmpHostStatusTest, NewStatusIsOfVersion2WithAnIntervalOfTenAndAllElseZero ) {
    EXPECT_EQ( status->igmpVersion(), igmpVersion2 );
    EXPECT_EQ( status->unsolicitedReportInterval(), 10.0 );
    EXPECT_FALSE( status->enablePeriodicReport() );
    EXPECT_FALSE( status->continueUnsolicitedReport() );
    for ( Counter const& counter : counters ) {
        EXPECT_EQ( ( *status.*counter.value )(), 0U ) << counter.name;
    }
}

TEST_F( IgmpHostStatusTest, IsKnownByItsName ) {
    EXPECT_EQ( status->fwkKey(), Kiv::Name( "host" ) );
}

TEST_F( IgmpHostStatusTest, CountersRiseAndTellOfThemselves ) {
    for ( Counter const& counter : counters ) {
        log.clear();
        ( *status.*counter.inc )( 1 );
        ( *status.*counter.inc )( 4 );
        EXPECT_EQ( ( *status.*counter.value )(), 5U ) << counter.name;
        EXPECT_THAT( log, ElementsAre( counter.name, counter.name ) );
    }
}

TEST_F( IgmpHostStatusTest, RaisingByZeroTellsNobody ) {
    for ( Counter const& counter : counters ) {
        ( *status.*counter.inc )( 0 );
    }
    EXPECT_THAT( log, IsEmpty() );
    EXPECT_EQ( status->modificationCount(), 0U );
}

TEST_F( IgmpHostStatusTest, CountersWrap ) {
    for ( Counter const& counter : counters ) {
        ( *status.*counter.is )( 0xffffffff );
        ( *status.*counter.inc )( 1 );
        EXPECT_EQ( ( *status.*counter.value )(), 0U ) << counter.name;
    }
}

} // namespace Igmp
