#include "engine/IgmpV3GroupCallbackSm.h"

#include "engine/IgmpHostSm.h"

namespace Igmp {

class IgmpV3GroupCallbackSm::KivGroupRecord : public IgmpV3GroupRecord::Notifiee {
  public:
    KivGroupRecord( Ptr<IgmpV3GroupRecord> const& record, IgmpV3GroupCallbackSm* callbackSm )
        : Notifiee( record ), callbackSm_( callbackSm ) {}

    void onVersion() override {
        if ( deliverable( IgmpV3GroupRecord::attrVersion ) && callbackSm_ ) {
            callbackSm_->processGroupChange();
        }
    }
    void callbackSmDel() { callbackSm_ = nullptr; }

  protected:
    std::span<Kiv::Watch const> watches() const override {
        static constexpr Kiv::Watch rows[] = {
            Kiv::watch<&KivGroupRecord::onVersion>( IgmpV3GroupRecord::attrVersion )
        };
        return rows;
    }

  private:
    IgmpV3GroupCallbackSm* callbackSm_;
};

Ptr<IgmpV3GroupCallbackSm>
IgmpV3GroupCallbackSm::IgmpV3GroupCallbackSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& mcastAddr,
    Ptr<IgmpV3GroupRecord> const& groupRecord, IgmpHostSm* igmpHostSm
) {
    return Kiv::stateMachineIs<IgmpV3GroupCallbackSm>( activity, mcastAddr, groupRecord, igmpHostSm );
}

Ptr<IgmpV3GroupCallbackSm>
igmpV3GroupCallbackSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& mcastAddr,
    Ptr<IgmpV3GroupRecord> const& groupRecord
) {
    return IgmpV3GroupCallbackSm::IgmpV3GroupCallbackSmIs( activity, mcastAddr, groupRecord, nullptr );
}

IgmpV3GroupCallbackSm::IgmpV3GroupCallbackSm(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& mcastAddr,
    Ptr<IgmpV3GroupRecord> const& groupRecord, IgmpHostSm* igmpHostSm
)
    : StateMachine( activity ), mcastAddr_( mcastAddr ), igmpHostSm_( igmpHostSm ) {
    if ( groupRecord ) {
        groupRecord_ = new KivGroupRecord( groupRecord, this );
        install( *groupRecord_ );
    }
    handleInitialized();
}

IgmpV3GroupCallbackSm::~IgmpV3GroupCallbackSm() {
    kivDoZombieReactors( true );
    if ( groupRecord_ ) {
        groupRecord_->callbackSmDel();
    }
}

IgmpV3GroupRecord*
IgmpV3GroupCallbackSm::groupRecord() const {
    return groupRecord_ ? groupRecord_->notifier() : nullptr;
}

void
IgmpV3GroupCallbackSm::forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) {
    if ( groupRecord_ ) {
        visit( *groupRecord_ );
    }
}

void
IgmpV3GroupCallbackSm::processGroupChange() {
    if ( !initialized_ ) {
        return;
    }
    Kiv::invariant( igmpHostSm_ != nullptr, "igmpHostSm()" );
    Ptr<IgmpHostSm> const held( igmpHostSm_ ); // whoever is told of a report may remove the host
    held->handleV3Group( mcastAddr_ );
}

} // namespace Igmp
