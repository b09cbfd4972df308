#pragma once

#include "engine/IgmpHostSm.h"

namespace Igmp {

/// The reactors of a host's state machine: which change reaches which handler. Each holds a plain pointer
/// back to the machine, which takes it away when it dies; from then on no handler runs.

class IgmpHostSm::KivIgmpHost : public IgmpHost::Notifiee {
  public:
    KivIgmpHost( Ptr<IgmpHost> const& host, IgmpHostSm* sm );
    void notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) override;
    void igmpHostSmDel() { sm_ = nullptr; }

    void onConfigVersion() override;
    void onIntfConfigVersion() override;
    void onExternalPam() override;
    void onPam() override;
    void onEnabled() override;
    void onIgmpVersion() override;
    void onIgmpVersionForced() override;
    void onProcessV3GroupChange() override;
    void onV3group( Zornet::IpAddr group ) override;
    void onV3group() override;
    void onUnsolicitedReportInterval() override;
    void onEnablePeriodicReport() override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    /// Runs the handlers in order until one makes the reactor a zombie.
    void run( std::initializer_list<void ( IgmpHostSm::* )()> handlers );
    void deliver( AttributeId id, std::initializer_list<void ( IgmpHostSm::* )()> handlers );

    IgmpHostSm* sm_;
    Kiv::PendingKey<Zornet::IpAddr> pendingGroup_;
};

class IgmpHostSm::KivIgmpHostStatus : public IgmpHostStatus::Notifiee {
  public:
    KivIgmpHostStatus( Ptr<IgmpHostStatus> const& status, IgmpHostSm* sm );
    void notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) override;
    void igmpHostSmDel() { sm_ = nullptr; }

    void onIgmpVersion() override;
    void onContinueUnsolicitedReport() override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    IgmpHostSm* sm_;
};

class IgmpHostSm::KivRxPam : public Zornet::Pam::Notifiee {
  public:
    KivRxPam( Ptr<Zornet::Pam> const& pam, IgmpHostSm* sm );
    void notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) override;
    void igmpHostSmDel() { sm_ = nullptr; }

    void onReadableCount() override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    IgmpHostSm* sm_;
};

/// What the two router-present timers share.
class RouterPresentTimer : public Lumo::TimerWheel::NotifieeConst {
  public:
    using Handler = void ( IgmpHostSm::* )();

    RouterPresentTimer( Ptr<Lumo::TimerWheel const> const& wheel, IgmpHostSm* sm, Handler handler );
    void notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) override;
    void igmpHostSmDel() { sm_ = nullptr; }

    void onTime() override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    IgmpHostSm* sm_;
    Handler handler_;
};

class IgmpHostSm::KivV1RouterPresentTimer : public RouterPresentTimer {
  public:
    KivV1RouterPresentTimer( Ptr<Lumo::TimerWheel const> const& wheel, IgmpHostSm* sm );
};

class IgmpHostSm::KivV2RouterPresentTimer : public RouterPresentTimer {
  public:
    KivV2RouterPresentTimer( Ptr<Lumo::TimerWheel const> const& wheel, IgmpHostSm* sm );
};

} // namespace Igmp
