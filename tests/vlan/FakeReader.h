#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/zornet/Pam.h"
#include "tests/vlan/Frames.h"

namespace Zornet {

/// Stands for a host: reads one frame for each signal of an access object. Null reads are written down as
/// "null". A blocked one hears the signal and reads nothing.
class FakeReader : public Pam::Notifiee {
  public:
    explicit FakeReader( Kiv::Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }

    void onReadableCount() override {
        if ( !deliverable( Pam::attrReadableCount ) ) {
            return;
        }
        ++signals;
        if ( !blocked ) {
            Kiv::Ptr<Pkt> const pkt = notifier()->rxPkt();
            read.push_back( pkt ? frameOf( pkt ) : "null" );
        }
        then();
    }

    U32 signals = 0;
    bool blocked = false;
    std::vector<std::string> read;
    /// What the reader does last for each signal.
    std::function<void()> then = [] {};

  protected:
    std::span<Kiv::Watch const> watches() const override {
        static constexpr Kiv::Watch rows[] = {
            Kiv::watch<&FakeReader::onReadableCount>( Pam::attrReadableCount )
        };
        return rows;
    }
};

} // namespace Zornet
