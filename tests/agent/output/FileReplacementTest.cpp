#include "agent/output/FileReplacement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <ostream>
#include <system_error>
#include <thread>

#include "platform/zornet/device/FileDescriptor.h"
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

/// Root for as long as it lives, or somebody else.
class EffectiveUser {
  public:
    explicit EffectiveUser( uid_t user ) { seteuid( user ); }
    ~EffectiveUser() { seteuid( 0 ); }
    EffectiveUser( EffectiveUser const& ) = delete;
    EffectiveUser& operator=( EffectiveUser const& ) = delete;
};

constexpr uid_t nobody = 65534;

TEST_F( FileReplacement, LinkStaysALinkToTheFile ) {
    std::filesystem::permissions( folder_.path(), std::filesystem::perms::all );
    EffectiveUser const user( nobody );
    folder_.fileWith( "real", "old" );
    std::filesystem::create_symlink( "real", folder_.file( "link" ) );
    replace( folder_.file( "link" ), "new" );
    EXPECT_TRUE( std::filesystem::is_symlink( folder_.file( "link" ) ) );
    EXPECT_EQ( folder_.contents( "real" ), "new" );
}

TEST_F( FileReplacement, RootFollowsNoLink ) {
    if ( geteuid() != 0 ) {
        GTEST_SKIP() << "needs root";
    }
    folder_.fileWith( "real", "old" );
    std::filesystem::create_symlink( "real", folder_.file( "link" ) );
    EXPECT_THROW( replace( folder_.file( "link" ), "new" ), std::system_error );
    EXPECT_THROW( checkReplaceable( folder_.file( "link" ) ), std::system_error );
    EXPECT_EQ( folder_.contents( "real" ), "old" );
}

/// Makes a link and takes it away again, as fast as it can, for as long as it lives.
class LinkThatComesAndGoes {
  public:
    LinkThatComesAndGoes( std::string const& target, std::string const& path )
        : thread_( [this, target, path] {
              while ( !ended_ ) {
                  [[maybe_unused]] int const made = symlink( target.c_str(), path.c_str() );
                  unlink( path.c_str() );
              }
          } ) {}
    ~LinkThatComesAndGoes() {
        ended_ = true;
        thread_.join();
    }
    LinkThatComesAndGoes( LinkThatComesAndGoes const& ) = delete;
    LinkThatComesAndGoes& operator=( LinkThatComesAndGoes const& ) = delete;

  private:
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

TEST_F( FileReplacement, RootFollowsNoLinkThatComesWhileItLooks ) {
    if ( geteuid() != 0 ) {
        GTEST_SKIP() << "needs root";
    }
    folder_.fileWith( "real", "old" );
    std::filesystem::create_directory( folder_.file( "d" ) );
    std::string longWay; // takes whoever resolves it part by part a time in which the link comes
    for ( int i = 0; i < 100; ++i ) {
        longWay += "d/../";
    }
    LinkThatComesAndGoes const link( "real", folder_.file( "link" ) );
    for ( int i = 0; i < 300; ++i ) {
        try {
            replace( folder_.file( longWay + "link" ), "new" );
        } catch ( std::system_error const& refusal ) {
            EXPECT_EQ( refusal.code().value(), ELOOP );
        }
        ASSERT_EQ( folder_.contents( "real" ), "old" ) << "at " << i;
    }
}

TEST_F( FileReplacement, LinkInThePlaceOfTheNewFileIsNotFollowed ) {
    folder_.fileWith( "real", "old" );
    std::string const between = folder_.file( "a" ) + ".new-" + std::to_string( getpid() );
    std::filesystem::create_symlink( "real", between );
    replace( folder_.file( "a" ), "new" );
    EXPECT_EQ( folder_.contents( "real" ), "old" );
    EXPECT_EQ( folder_.contents( "a" ), "new" );
    EXPECT_FALSE( std::filesystem::is_symlink( folder_.file( "a" ) ) );
}

TEST_F( FileReplacement, WhatIsNoRegularFileIsWrittenToAndStays ) {
    std::string const path = folder_.file( "pipe" );
    ASSERT_EQ( mkfifo( path.c_str(), 0600 ), 0 );
    Zornet::FileDescriptor const pipe( open( path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC ) );
    replace( path, "new" );
    EXPECT_TRUE( std::filesystem::is_fifo( path ) );
    char contents[16];
    EXPECT_EQ( read( pipe.get(), contents, sizeof contents ), 3 );
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
