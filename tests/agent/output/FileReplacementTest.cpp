#include "agent/output/FileReplacement.h"

#include <gtest/gtest.h>

#include <ostream>
#include <system_error>

#include "tests/agent/TemporaryFolder.h"

namespace Agent {

namespace {

class FileReplacement : public ::testing::Test {
  protected:
    static void replace( std::string const& path, std::string const& contents ) {
        replaceFile( path, [&]( std::ostream& out ) { out << contents; } );
    }

    TemporaryFolder folder_;
};

TEST_F( FileReplacement, NewFileGetsTheContents ) {
    replace( folder_.file( "a" ), "new" );
    EXPECT_EQ( folder_.contents( "a" ), "new" );
    EXPECT_EQ( folder_.files(), 1U );
}

TEST_F( FileReplacement, OldContentsStandUntilTheNewAreWhole ) {
    folder_.fileWith( "a", "old" );
    std::string during;
    replaceFile( folder_.file( "a" ), [&]( std::ostream& out ) {
        out << "new" << std::flush;
        during = folder_.contents( "a" );
    } );
    EXPECT_EQ( during, "old" );
    EXPECT_EQ( folder_.contents( "a" ), "new" );
}

TEST_F( FileReplacement, FailureLeavesTheOldContentsAndNothingElse ) {
    folder_.fileWith( "a", "old" );
    auto const fail = []( std::ostream& out ) { out.setstate( std::ios::badbit ); };
    EXPECT_THROW( replaceFile( folder_.file( "a" ), fail ), std::system_error );
    EXPECT_EQ( folder_.contents( "a" ), "old" );
    EXPECT_EQ( folder_.files(), 1U );
}

TEST_F( FileReplacement, MessageNamesTheFileAndTheReason ) {
    std::string const path = folder_.file( "none/a" );
    try {
        replace( path, "new" );
        FAIL() << "written";
    } catch ( std::system_error const& fault ) {
        EXPECT_EQ( fault.what(), "cannot write " + path + ": No such file or directory" );
    }
}

TEST_F( FileReplacement, LinkStaysALinkToTheFile ) {
    folder_.fileWith( "real", "old" );
    std::filesystem::create_symlink( "real", folder_.file( "link" ) );
    replace( folder_.file( "link" ), "new" );
    EXPECT_TRUE( std::filesystem::is_symlink( folder_.file( "link" ) ) );
    EXPECT_EQ( folder_.contents( "real" ), "new" );
}

TEST_F( FileReplacement, WhatIsNoRegularFileIsWrittenToAndStays ) {
    replace( "/dev/null", "new" );
    EXPECT_TRUE( std::filesystem::is_character_file( "/dev/null" ) );
}

TEST_F( FileReplacement, CheckLeavesNoTrace ) {
    checkReplaceable( folder_.file( "a" ) );
    EXPECT_EQ( folder_.files(), 0U );
}

TEST_F( FileReplacement, CheckRefusesWhatCannotBeWritten ) {
    EXPECT_THROW( checkReplaceable( folder_.file( "none/a" ) ), std::system_error );
    EXPECT_THROW( checkReplaceable( folder_.path().string() ), std::system_error );
}

} // namespace

} // namespace Agent
