#pragma once

#include "engine/IgmpHostSm.h"
#include "model/IgmpHostDir.h"
#include "vlan/VlanPamMultiplexer.h"

namespace Igmp {

/// The root of the emulation: it watches the directory of hosts and keeps one state machine for each, and it
/// holds what the hosts of one interface share, a multiplexer and the number of its users.
class IgmpHostDirSm : public Kiv::StateMachine {
  public:
    class KivIgmpHostDir;
    /// The multiplexer of one interface.
    class KivMultiplexerDir : public Kiv::PtrInterface, public Kiv::HashMember {
      public:
        explicit KivMultiplexerDir( Zornet::IntfId const& key ) : intf( key ) {}
        Zornet::IntfId const& fwkKey() const { return intf; }
        Ptr<Zornet::VlanPamMultiplexer>
        multiplexerDirIs( Ptr<Kiv::ActivityConfig> const& activity, Zornet::IntfId const& interface );

        Zornet::IntfId const intf;
        Ptr<Zornet::VlanPamMultiplexer> multiplexer;
    };
    /// How many hosts use it.
    class KivMultiplexerRefCount : public Kiv::PtrInterface, public Kiv::HashMember {
      public:
        KivMultiplexerRefCount( Zornet::IntfId const& key, U16 users ) : intf( key ), count( users ) {}
        Zornet::IntfId const& fwkKey() const { return intf; }

        Zornet::IntfId const intf;
        U16 count;
    };
    using IgmpHostSms = Kiv::HashMap<IgmpHostSm, Kiv::Name>;
    using MultiplexerDirs = Kiv::HashMap<KivMultiplexerDir, Zornet::IntfId>;
    using MultiplexerRefCounts = Kiv::HashMap<KivMultiplexerRefCount, Zornet::IntfId>;

    static Ptr<IgmpHostDirSm> IgmpHostDirSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<IgmpHostDir> const& dir,
        Ptr<IgmpHostStatusDir> const& statusDir, Ptr<Lumo::TimerWheel const> const& timerWheel
    );
    ~IgmpHostDirSm() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostDirSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    /// The directory that is watched, or null.
    IgmpHostDir* igmpHostDir() const;
    Ptr<IgmpHostStatusDir> const& igmpHostStatusDir() const { return igmpHostStatusDir_; }
    Ptr<Lumo::TimerWheel const> const& timerWheel() const { return timerWheel_; }
    bool initialized() const { return initialized_; }

    void handleInitialized();
    /// Takes up every host of the directory. Only the first pass may do so: with any host's machine in being
    /// it ends the process.
    void handleIgmpHostDir();
    /// Makes or drops the machine of one name.
    void handleIgmpHostDir( Kiv::String8 name );

    IgmpHostSms const& igmpHostSm() const { return igmpHostSm_; }
    Ptr<IgmpHostSm> igmpHostSm( Kiv::Name const& name ) const { return igmpHostSm_.find( name ); }
    std::size_t igmpHostSms() const { return igmpHostSm_.size(); }
    Ptr<IgmpHostSm> newIgmpHostSm(
        Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
        Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir
    );
    Ptr<IgmpHostSm> igmpHostSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
        Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir
    );
    Ptr<IgmpHostSm> igmpHostSmDel( Kiv::Name const& name ) { return igmpHostSm_.remove( name ); }
    void igmpHostSmDel( IgmpHostSms::Iterator const& at ) { igmpHostSm_.remove( at->name() ); }
    void igmpHostSmDelAll() { igmpHostSm_.clear(); }

    // The shared devices, by interface.
    MultiplexerDirs const& multiplexerDir() const { return multiplexerDir_; }
    std::size_t multiplexerDirs() const { return multiplexerDir_.size(); }
    Ptr<Zornet::VlanPamMultiplexer> multiplexerDir( Zornet::IntfId const& intf ) const;
    Ptr<Zornet::VlanPamMultiplexer>
    newMultiplexerDir( Ptr<Kiv::ActivityConfig> const& activity, Zornet::IntfId const& intf );
    Ptr<Zornet::VlanPamMultiplexer>
    multiplexerDirIs( Ptr<Kiv::ActivityConfig> const& activity, Zornet::IntfId const& intf );
    Ptr<Zornet::VlanPamMultiplexer> multiplexerDirDel( Zornet::IntfId const& intf );
    void multiplexerDirDelAll() { multiplexerDir_.clear(); }
    MultiplexerRefCounts const& multiplexerRefCount() const { return multiplexerRefCount_; }
    std::size_t multiplexerRefCounts() const { return multiplexerRefCount_.size(); }
    /// 0 for an interface that nobody uses.
    U16 multiplexerRefCount( Zornet::IntfId const& intf ) const;
    void multiplexerRefCountIs( Zornet::IntfId const& intf, U16 count );
    /// Both create an absent count with 0 first, wrap at 16 bits and return the new count.
    U16 multiplexerRefCountInc( Zornet::IntfId const& intf, U16 by );
    U16 multiplexerRefCountDec( Zornet::IntfId const& intf, U16 by );
    void multiplexerRefCountDel( Zornet::IntfId const& intf ) { multiplexerRefCount_.remove( intf ); }

  protected:
    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override;
    void forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpHostDirSm(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<IgmpHostDir> const& dir,
        Ptr<IgmpHostStatusDir> const& statusDir, Ptr<Lumo::TimerWheel const> const& timerWheel
    );

    Ptr<KivIgmpHostDir> igmpHostDir_;
    Ptr<IgmpHostStatusDir> const igmpHostStatusDir_;
    Ptr<Lumo::TimerWheel const> const timerWheel_;
    IgmpHostSms igmpHostSm_;
    MultiplexerDirs multiplexerDir_;
    MultiplexerRefCounts multiplexerRefCount_;
    bool initialized_ = false;
};

Ptr<IgmpHostDirSm> igmpHostDirSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<IgmpHostDir> const& dir,
    Ptr<IgmpHostStatusDir> const& statusDir, Ptr<Lumo::TimerWheel const> const& timerWheel
);

} // namespace Igmp
