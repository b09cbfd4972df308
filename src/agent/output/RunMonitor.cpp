#include "agent/output/RunMonitor.h"

namespace Agent {

namespace {

double
rate( U64 now, U64 before, Kiv::Seconds span ) {
    return span > 0.0 ? static_cast<double>( now - before ) / span : 0.0;
}

} // namespace

RunView
RunMonitor::look() {
    RunView view;
    view.time = Kiv::now();
    view.elapsed = view.time - context_.started;
    view.duration = context_.scenario.duration;
    view.hosts = context_.emulation.hostDir().igmpHosts();
    context_.ledger.balance();
    view.account = context_.ledger.total();
    view.timersArmed = context_.wheel->armedTimers();
    std::map<std::string, DeviceTraffic> const now = context_.traffic.devices();
    Kiv::Seconds const span = view.time - lastTime_;
    for ( auto const& [label, traffic] : now ) {
        DeviceTraffic const& before = last_[label];
        RunView::Device const device{ traffic, rate( traffic.received, before.received, span ),
                                      rate( traffic.sent, before.sent, span ) };
        view.devices[label] = device;
        if ( !context_.farEnds.contains( label ) ) {
            view.all.traffic += traffic;
            view.all.receivedPerSecond += device.receivedPerSecond;
            view.all.sentPerSecond += device.sentPerSecond;
        }
    }
    view.next = context_.nextEvent ? context_.nextEvent() : std::nullopt;
    last_ = now;
    lastTime_ = view.time;
    return view;
}

} // namespace Agent
